// afx_object.h - CObject and its run-time class records.
//
//   class CLedger : public CObject { DECLARE_DYNAMIC(CLedger) };   // in the header
//   IMPLEMENT_DYNAMIC(CLedger, CObject)                             // in the source
//   if (object->IsKindOf(RUNTIME_CLASS(CLedger))) ...
//
// Threads: the records are constant; nothing here is shared otherwise.
#pragma once

#include <windows.h>

#include "afx_export.h"

class CObject;

/// What is known about one class at run time. Records are constants, one a class.
struct AFX_API CRuntimeClass {
    LPCSTR m_lpszClassName;
    int m_nObjectSize;
    const CRuntimeClass* m_pBaseClass;  // null for CObject

    /// Whether this class is the given one or one of its descendants.
    BOOL IsDerivedFrom(const CRuntimeClass* pBaseClass) const noexcept;
};

/// The root of the framework's classes. Not copied: a descendant that can be copied says so itself.
class AFX_API CObject {
public:
    CObject() = default;
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;
    virtual ~CObject();

    virtual CRuntimeClass* GetRuntimeClass() const;
    BOOL IsKindOf(const CRuntimeClass* pClass) const;

    static CRuntimeClass classCObject;
};

#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

#define DECLARE_DYNAMIC(class_name)         \
public:                                     \
    static CRuntimeClass class##class_name; \
    CRuntimeClass* GetRuntimeClass() const override;

#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                    \
    CRuntimeClass class_name::class##class_name = {#class_name, sizeof(class class_name), \
                                                   RUNTIME_CLASS(base_class_name)};       \
    CRuntimeClass* class_name::GetRuntimeClass() const {                                  \
        return RUNTIME_CLASS(class_name);                                                 \
    }

/// The object as the named class, or null when it is none.
AFX_API CObject* AfxDynamicDownCast(CRuntimeClass* pClass, CObject* pObject);

#define DYNAMIC_DOWNCAST(class_name, object) \
    (static_cast<class_name*>(AfxDynamicDownCast(RUNTIME_CLASS(class_name), object)))
#define STATIC_DOWNCAST(class_name, object) (static_cast<class_name*>(object))
