// The root of the framework's class tree: run-time class information by name, so
// that an object can tell which class it is and what it derives from.
#pragma once

#include "qvb/QvbVersion.h"
#include "qvb/WinTypes.h"

struct QVB_API CRuntimeClass {
    const char* m_lpszClassName;
    int m_nObjectSize;
    const CRuntimeClass* m_pBaseClass;

    BOOL IsDerivedFrom(const CRuntimeClass* pBaseClass) const;
};

class QVB_API CObject {
public:
    virtual ~CObject();

    virtual const CRuntimeClass* GetRuntimeClass() const;
    BOOL IsKindOf(const CRuntimeClass* pClass) const;

    static const CRuntimeClass classCObject;

protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};

#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

// In the class body: the class's own run-time information.
#define DECLARE_DYNAMIC(class_name)                               \
public:                                                           \
    static const CRuntimeClass class##class_name;                 \
    const CRuntimeClass* GetRuntimeClass() const override;

// In one source file: the information itself, naming the base class.
#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                          \
    const CRuntimeClass class_name::class##class_name = {#class_name, sizeof(class_name),      \
                                                         RUNTIME_CLASS(base_class_name)};      \
    const CRuntimeClass* class_name::GetRuntimeClass() const { return RUNTIME_CLASS(class_name); }
