#include "nvk/afx/object.h"

#include <gtest/gtest.h>

#include <memory>

#include "nvk/afx/exceptions.h"
#include "nvk/afx/sync_objects.h"

namespace {

class Shape : public CObject {
    DECLARE_DYNAMIC(Shape)
};
IMPLEMENT_DYNAMIC(Shape, CObject)

class Circle : public Shape {
    DECLARE_DYNCREATE(Circle)

public:
    int m_radius = 7;
};
IMPLEMENT_DYNCREATE(Circle, Shape)

class Refused : public CObject {
    DECLARE_DYNCREATE(Refused)

public:
    Refused() { AfxThrowNotSupportedException(); }
};
IMPLEMENT_DYNCREATE(Refused, CObject)

TEST(RuntimeClassTest, RecordsAndKinds) {
    const CRuntimeClass* circle = RUNTIME_CLASS(Circle);
    EXPECT_STREQ(circle->m_lpszClassName, "Circle");
    EXPECT_EQ(circle->m_nObjectSize, static_cast<int>(sizeof(Circle)));
    EXPECT_EQ(circle->m_wSchema, 0xFFFFu);
    EXPECT_EQ(circle->m_pBaseClass, RUNTIME_CLASS(Shape));
    EXPECT_EQ(Circle::GetThisClass(), circle);

    Circle c;
    const CObject& base = c;
    EXPECT_EQ(base.GetRuntimeClass(), circle);
    EXPECT_TRUE(base.IsKindOf(RUNTIME_CLASS(Shape)));
    EXPECT_TRUE(base.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(base.IsKindOf(RUNTIME_CLASS(CException)));
    EXPECT_FALSE(base.IsSerializable());

    // The framework's own classes carry records too.
    CCriticalSection lock;
    EXPECT_TRUE(lock.IsKindOf(RUNTIME_CLASS(CSyncObject)));
    CArchiveException e;
    EXPECT_TRUE(e.IsKindOf(RUNTIME_CLASS(CException)));
}

TEST(RuntimeClassTest, CreateObject) {
    std::unique_ptr<CObject> made(RUNTIME_CLASS(Circle)->CreateObject());
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetRuntimeClass(), RUNTIME_CLASS(Circle));
    EXPECT_EQ(static_cast<Circle*>(made.get())->m_radius, 7);
    // No factory, or a factory that throws: null.
    EXPECT_EQ(RUNTIME_CLASS(Shape)->CreateObject(), nullptr);
    EXPECT_EQ(RUNTIME_CLASS(Refused)->CreateObject(), nullptr);
}

}  // namespace
