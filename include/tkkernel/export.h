// tkkernel/export.h - the word that stands before every exported function and class.
//
// The build defines TKKERNEL_API where exporting and importing differ; elsewhere one visible symbol serves both.
#pragma once

#ifndef TKKERNEL_API
#define TKKERNEL_API __attribute__((visibility("default")))
#endif
