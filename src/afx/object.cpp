#include "nvk/afx/object.h"

#include "nvk/afx/exceptions.h"

const CRuntimeClass CObject::classCObject = {"CObject", static_cast<int>(sizeof(CObject)),
                                             nvk::afx::kNoSchema, nullptr, nullptr};

CObject* CRuntimeClass::CreateObject() const {
    if (m_pfnCreateObject == nullptr) {
        return nullptr;
    }
    try {
        return m_pfnCreateObject();
    } catch (CException* e) {
        e->Delete();
        return nullptr;
    }
}

bool CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* c = this; c != nullptr; c = c->m_pBaseClass) {
        if (c == base) {
            return true;
        }
    }
    return false;
}

const CRuntimeClass* CObject::GetRuntimeClass() const {
    return &classCObject;
}

void CObject::Serialize(CArchive& /*ar*/) {}

bool CObject::IsKindOf(const CRuntimeClass* target) const {
    return GetRuntimeClass()->IsDerivedFrom(target);
}
