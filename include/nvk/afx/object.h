// The root of the framework's class tree: CObject and its run-time class
// records. A record names the class, gives its size and schema, links to the
// base class and, for dynamically creatable classes, makes a new object.
#pragma once

#include "nvk/nvkafx_export.h"

class CArchive;
class CObject;

struct NVKAFX_EXPORT CRuntimeClass {
    const char* m_lpszClassName;
    int m_nObjectSize;
    // 0xFFFF for classes that are not serialisable by schema.
    unsigned m_wSchema;
    CObject* (*m_pfnCreateObject)();
    const CRuntimeClass* m_pBaseClass;

    // A new object on the heap, or null when the class has no factory or the
    // factory failed with a framework exception.
    CObject* CreateObject() const;
    bool IsDerivedFrom(const CRuntimeClass* base) const;
};

namespace nvk::afx {
// The schema of classes that are not serialisable by schema.
inline constexpr unsigned kNoSchema = 0xFFFF;
}  // namespace nvk::afx

class NVKAFX_EXPORT CObject {
public:
    static const CRuntimeClass classCObject;
    static const CRuntimeClass* GetThisClass() { return &classCObject; }

    virtual const CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject() = default;
    // Does nothing; a class that travels through archives overrides it.
    virtual void Serialize(CArchive& ar);
    virtual void AssertValid() const {}

    bool IsKindOf(const CRuntimeClass* target) const;
    bool IsSerializable() const { return GetRuntimeClass()->m_wSchema != nvk::afx::kNoSchema; }

protected:
    CObject() = default;
    // Copies of a derived object may copy its CObject part; a bare CObject is
    // not to be copied.
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};

#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

#define DECLARE_DYNAMIC(class_name)                         \
public:                                                     \
    static const CRuntimeClass class##class_name;           \
    static const CRuntimeClass* GetThisClass() {            \
        return &class##class_name;                          \
    }                                                       \
    const CRuntimeClass* GetRuntimeClass() const override { \
        return &class##class_name;                          \
    }

#define DECLARE_DYNCREATE(class_name) \
    DECLARE_DYNAMIC(class_name)       \
    static CObject* CreateObject();

#define DECLARE_SERIAL(class_name) DECLARE_DYNCREATE(class_name)

// The record is constant-initialised, so it is valid before any constructor
// of the module runs, and the base class may live in another module.
#define NVK_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, schema, factory) \
    const CRuntimeClass class_name::class##class_name = {                        \
        #class_name, static_cast<int>(sizeof(class_name)), schema, factory,      \
        RUNTIME_CLASS(base_class_name)};

#define IMPLEMENT_DYNAMIC(class_name, base_class_name) \
    NVK_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, ::nvk::afx::kNoSchema, nullptr)

#define IMPLEMENT_DYNCREATE(class_name, base_class_name)                           \
    CObject* class_name::CreateObject() {                                          \
        return new class_name;                                                     \
    }                                                                              \
    NVK_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, ::nvk::afx::kNoSchema, \
                               class_name::CreateObject)

#define IMPLEMENT_SERIAL(class_name, base_class_name, schema) \
    CObject* class_name::CreateObject() {                     \
        return new class_name;                                \
    }                                                         \
    NVK_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, schema, class_name::CreateObject)
