// tkkernel/export.h - the word that stands before every exported function and class.
//
// The build gives it its meaning where exporting takes one; programs that use the library need none.
#pragma once

#ifndef TKKERNEL_API
#define TKKERNEL_API
#endif
