#include "nvk/afx/map.h"

CMapStringToOb::~CMapStringToOb() = default;
