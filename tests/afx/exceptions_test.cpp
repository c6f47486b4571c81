#include "nvk/afx/exceptions.h"

#include <gtest/gtest.h>

namespace {

template <class Throw>
CException* Caught(Throw action) {
    try {
        action();
    } catch (CException* e) {
        return e;
    }
    return nullptr;
}

TEST(AfxThrowTest, ExceptionsArriveAsPointersToTheirClass) {
    nvk::afx::ExceptionPtr archive(
        Caught([] { AfxThrowArchiveException(CArchiveException::badSchema, "dossier.dat"); }));
    ASSERT_TRUE(archive->IsKindOf(RUNTIME_CLASS(CArchiveException)));
    const auto* a = static_cast<CArchiveException*>(archive.get());
    EXPECT_EQ(a->m_cause, 7);
    EXPECT_EQ(a->m_strFileName, "dossier.dat");

    nvk::afx::ExceptionPtr unsupported(Caught([] { AfxThrowNotSupportedException(); }));
    EXPECT_TRUE(unsupported->IsKindOf(RUNTIME_CLASS(CNotSupportedException)));

    nvk::afx::ExceptionPtr file(Caught([] { CFileException::ThrowOsError(32, "a.ini"); }));
    ASSERT_TRUE(file->IsKindOf(RUNTIME_CLASS(CFileException)));
    EXPECT_EQ(static_cast<CFileException*>(file.get())->m_cause, CFileException::sharingViolation);
    // Messages are cut to the room given, with a terminator.
    char text[5];
    EXPECT_TRUE(file->GetErrorMessage(text, sizeof text));
    EXPECT_STREQ(text, "A sh");
    // The usual two arguments work through every derived class too.
    const auto* derived = static_cast<CFileException*>(file.get());
    EXPECT_TRUE(derived->GetErrorMessage(text, sizeof text));
    EXPECT_TRUE(static_cast<const CArchiveException*>(a)->GetErrorMessage(text, sizeof text));
    EXPECT_STREQ(text, "The ");
}

TEST(AfxThrowTest, MemoryExceptionIsSharedAndSurvivesDelete) {
    CException* first = Caught([] { AfxThrowMemoryException(); });
    first->Delete();
    CException* second = Caught([] { AfxThrowMemoryException(); });
    EXPECT_EQ(first, second);
    EXPECT_TRUE(second->IsKindOf(RUNTIME_CLASS(CMemoryException)));
    second->Delete();
}

}  // namespace
