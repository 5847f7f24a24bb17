// values.h - automation values for scripts and expectations, and their one-line description.
//
//   object->On(Get(18)).Returns(Long(1));
//   EXPECT_EQ(Describe(Text("abc")), "BSTR \"abc\"");
//
// Threads: plain values.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afxdisp.h>

#include <string>

namespace tk::test {

inline COleVariant Nothing() {
    return COleVariant();
}
COleVariant Null();
COleVariant Short(short value);
COleVariant Long(long value);
COleVariant Float(float value);
COleVariant Real(double value);
COleVariant Date(DATE value);
COleVariant Flag(bool value);
/// A BSTR of GBK text; null gives a BSTR that is a null pointer.
COleVariant Text(const char* value);
/// The integer divided by 10^scale, as VT_DECIMAL.
COleVariant Decimal(long long value, int scale = 0);
/// A value of the given integer type, which need not be one that COleVariant knows.
COleVariant Integer(VARTYPE type, long long value);
/// Adds a reference.
COleVariant Object(IDispatch* object);
COleVariant Unknown(IUnknown* object);

/// The type, then the value: "I4 3", "BSTR \"x\"", "BSTR null", "BOOL true", "EMPTY", "VARIANT& EMPTY",
/// "VARIANT[] {EMPTY, I4 3}".
/// Objects show as "DISPATCH", or "DISPATCH null"; a scripted one adds its name.
std::string Describe(const VARIANT& value);

}  // namespace tk::test
