// lm.h - the machine's accounts.
#pragma once

#include "lmaccess.h"
