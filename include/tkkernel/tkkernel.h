// tkkernel/tkkernel.h - the whole interface of the library.
//
//   #include <tkkernel/tkkernel.h>
//
// One header for each family; a program that needs one family alone may include that one.
#pragma once

#include "tkkernel/catalog.h"
#include "tkkernel/driver.h"
#include "tkkernel/platform.h"
#include "tkkernel/session.h"
#include "tkkernel/sync.h"
#include "tkkernel/util.h"
