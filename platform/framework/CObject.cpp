#include "qvb/CObject.h"

const CRuntimeClass CObject::classCObject = {"CObject", sizeof(CObject), nullptr};

CObject::~CObject() = default;

const CRuntimeClass* CObject::GetRuntimeClass() const { return RUNTIME_CLASS(CObject); }

BOOL CObject::IsKindOf(const CRuntimeClass* pClass) const {
    return GetRuntimeClass()->IsDerivedFrom(pClass);
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* pBaseClass) const {
    for (const CRuntimeClass* c = this; c != nullptr; c = c->m_pBaseClass) {
        if (c == pBaseClass) return TRUE;
    }
    return FALSE;
}
