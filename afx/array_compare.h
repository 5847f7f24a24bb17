// afx/array_compare.h - whether two arrays of automation are the same; shared by the two classes that hold them.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace tk::afx {

/// Same bounds and the same bytes. Elements that are texts, variants or objects are never the same, empty arrays aside.
bool SameArrays(const SAFEARRAY* first, const SAFEARRAY* second) noexcept;

/// Elements over all dimensions.
std::size_t ElementCount(const SAFEARRAY* array) noexcept;

}  // namespace tk::afx
