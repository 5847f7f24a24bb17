// afx_export.h - how the framework classes leave the library they are built into.
//
// The build defines AFX_API where exporting and importing differ; elsewhere one visible symbol serves both.
#pragma once

#ifndef AFX_API
#define AFX_API __attribute__((visibility("default")))
#endif

// Lets the compiler compare a format text with its arguments; define it empty to turn that off.
#ifndef AFX_PRINTF_LIKE
#define AFX_PRINTF_LIKE(text, first) __attribute__((format(gnu_printf, text, first)))
#endif
