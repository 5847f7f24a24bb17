#pragma once
#include "windef.h"
#include "winerror.h"
