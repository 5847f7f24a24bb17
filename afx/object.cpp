#include "afx_object.h"

CRuntimeClass CObject::classCObject = {"CObject", sizeof(CObject), nullptr};

CObject::~CObject() = default;

CRuntimeClass* CObject::GetRuntimeClass() const {
    return &classCObject;
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* pBaseClass) const noexcept {
    for (const CRuntimeClass* known = this; known != nullptr; known = known->m_pBaseClass) {
        if (known == pBaseClass) return TRUE;
    }
    return FALSE;
}

BOOL CObject::IsKindOf(const CRuntimeClass* pClass) const {
    return GetRuntimeClass()->IsDerivedFrom(pClass);
}

CObject* AfxDynamicDownCast(CRuntimeClass* pClass, CObject* pObject) {
    return pObject != nullptr && pObject->IsKindOf(pClass) ? pObject : nullptr;
}
