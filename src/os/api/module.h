// Modules loaded at run time: public, since applications load their own.
#pragma once

#include "nvk/os/module.h"
