// Resources of modules: public, since applications carry tables of their own.
#pragma once

#include "nvk/os/resource.h"
