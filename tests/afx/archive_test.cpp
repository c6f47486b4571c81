#include "nvk/afx/archive.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "nvk/afx/cstring.h"
#include "nvk/afx/exceptions.h"
#include "nvk/afx/mem_file.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Contents(CFile& file) {
    Bytes out(static_cast<std::size_t>(file.GetLength()));
    file.SeekToBegin();
    EXPECT_EQ(file.Read(out.data(), static_cast<unsigned>(out.size())), out.size());
    return out;
}

template <class Store>
Bytes Stored(Store store) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        store(ar);
    }
    return Contents(file);
}

// A file holding `bytes`, at its start.
void Fill(CMemFile& file, const Bytes& bytes) {
    file.Write(bytes.data(), static_cast<unsigned>(bytes.size()));
    file.SeekToBegin();
}

// The cause of the CArchiveException that `action` throws, or -1.
template <class Action>
int ArchiveCause(Action action) {
    try {
        action();
    } catch (CArchiveException* e) {
        nvk::afx::ExceptionPtr owner(e);
        return e->m_cause;
    }
    return -1;
}

class Vertex : public CObject {
    DECLARE_SERIAL(Vertex)

public:
    void Serialize(CArchive& ar) override {
        if (ar.IsStoring()) {
            ar << m_x << m_y;
        } else {
            ar >> m_x >> m_y;
        }
    }
    int m_x = 0;
    int m_y = 0;
};
IMPLEMENT_SERIAL(Vertex, CObject, 2)

TEST(CArchiveTest, NumbersAreLittleEndian) {
    const Bytes bytes = Stored([](CArchive& ar) {
        ar << static_cast<std::uint8_t>(0x01) << static_cast<std::uint16_t>(0x0302)
           << static_cast<std::uint32_t>(0x07060504) << -2 << true << 1.0f << -2.5
           << static_cast<short>(-1) << 0x0F0E0D0C0B0A0908ULL;
    });
    const Bytes expected = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,        // 1, 2 and 4 bytes
                            0xFE, 0xFF, 0xFF, 0xFF,                          // int -2
                            0x01,                                            // bool
                            0x00, 0x00, 0x80, 0x3F,                          // 1.0f
                            0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0xC0,  // -2.5
                            0xFF, 0xFF,                                      // short -1
                            0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F};
    EXPECT_EQ(bytes, expected);
}

TEST(CArchiveTest, RoundTripThroughASmallBuffer) {
    // Values of every width straddle the 64-byte buffer's refills.
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 64);
        for (int i = 0; i < 100; ++i) {
            ar << static_cast<std::uint16_t>(i * 300) << i * -70000 << (i % 2 == 0)
               << static_cast<double>(i) / 7 << CString('s', i);
        }
    }
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load, 64);
    for (int i = 0; i < 100; ++i) {
        std::uint16_t w;
        int l;
        bool flag;
        double g;
        CString s;
        ar >> w >> l >> flag >> g >> s;
        ASSERT_EQ(w, static_cast<std::uint16_t>(i * 300));
        ASSERT_EQ(l, i * -70000);
        ASSERT_EQ(flag, i % 2 == 0);
        ASSERT_EQ(g, static_cast<double>(i) / 7);
        ASSERT_EQ(s, CString('s', i));
    }
    std::uint8_t extra;
    EXPECT_EQ(ArchiveCause([&] { ar >> extra; }), CArchiveException::endOfFile);
}

TEST(CArchiveTest, StringLengthPrefixes) {
    struct Case {
        int length;
        Bytes prefix;
    };
    const Case cases[] = {
        {0, {0x00}},
        {254, {0xFE}},
        {255, {0xFF, 0xFF, 0x00}},
        {65533, {0xFF, 0xFD, 0xFF}},
        {65534, {0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x00, 0x00}},
        {70000, {0xFF, 0xFF, 0xFF, 0x70, 0x11, 0x01, 0x00}},
    };
    for (const Case& c : cases) {
        const CString text('t', c.length);
        CMemFile file;
        {
            CArchive ar(&file, CArchive::store);
            ar << text;
        }
        const Bytes bytes = Contents(file);
        ASSERT_EQ(bytes.size(), c.prefix.size() + static_cast<std::size_t>(c.length)) << c.length;
        EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(c.prefix.size())),
                  c.prefix)
            << c.length;

        file.SeekToBegin();
        CArchive ar(&file, CArchive::load);
        CString back("old");
        ar >> back;
        EXPECT_EQ(back, text) << c.length;
    }
}

TEST(CArchiveTest, WrongDirectionAndShortDataThrow) {
    CMemFile file;
    Fill(file, {0x05, 'a', 'b'});
    {
        CArchive loading(&file, CArchive::load);
        EXPECT_EQ(ArchiveCause([&] { loading << 1; }), CArchiveException::readOnly);
        EXPECT_EQ(ArchiveCause([&] { loading << CString("x"); }), CArchiveException::readOnly);
        CString s("kept");
        EXPECT_EQ(ArchiveCause([&] { loading >> s; }), CArchiveException::endOfFile);
        EXPECT_EQ(s, "kept");
    }
    {
        file.SeekToBegin();
        CArchive loading(&file, CArchive::load);
        std::uint32_t d;
        EXPECT_EQ(ArchiveCause([&] { loading >> d; }), CArchiveException::endOfFile);
    }
    CArchive storing(&file, CArchive::store);
    int i;
    char buffer[4];
    EXPECT_EQ(ArchiveCause([&] { storing >> i; }), CArchiveException::writeOnly);
    EXPECT_EQ(ArchiveCause([&] { storing.Read(buffer, 4); }), CArchiveException::writeOnly);
    storing.Close();
    EXPECT_EQ(ArchiveCause([&] { storing << 1; }), CArchiveException::genericException);
}

TEST(CArchiveTest, DamagedLengthEndsAtTheData) {
    // Lengths below and above what a CString can hold, one byte behind each.
    for (const std::uint8_t top : {0x7F, 0xFF}) {
        CMemFile file;
        Fill(file, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, top, 'a'});
        CArchive ar(&file, CArchive::load);
        CString s("kept");
        EXPECT_EQ(ArchiveCause([&] { ar >> s; }), CArchiveException::endOfFile) << int{top};
        EXPECT_EQ(s, "kept");
    }
}

TEST(CArchiveTest, FlushGivesBackTheBytesReadAhead) {
    CMemFile file;
    Fill(file, Bytes(100, 7));
    CArchive ar(&file, CArchive::load);
    std::uint16_t w;
    ar >> w;
    ar.Flush();
    EXPECT_EQ(file.GetPosition(), 2u);
    ar >> w;
    ar.Close();
    EXPECT_EQ(file.GetPosition(), 4u);
}

TEST(CArchiveTest, LargeBlocksAndShortReads) {
    Bytes big(10000);
    for (std::size_t i = 0; i < big.size(); ++i) {
        big[i] = static_cast<std::uint8_t>(i * 31);
    }
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 128);
        ar << 'x';
        ar.Write(big.data(), static_cast<unsigned>(big.size()));
        ar << 'y';
    }
    EXPECT_EQ(file.GetLength(), big.size() + 2);
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load, 128);
    char c;
    ar >> c;
    Bytes back(big.size());
    EXPECT_EQ(ar.Read(back.data(), static_cast<unsigned>(back.size())), back.size());
    EXPECT_EQ(back, big);
    ar >> c;
    EXPECT_EQ(c, 'y');
    EXPECT_EQ(ar.Read(back.data(), 10), 0u);
}

TEST(CArchiveTest, SerializeThroughTheBase) {
    CMemFile file;
    Vertex p;
    p.m_x = -3;
    p.m_y = 40000;
    {
        CArchive ar(&file, CArchive::store);
        static_cast<CObject&>(p).Serialize(ar);
    }
    EXPECT_EQ(file.GetLength(), 8u);
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load);
    std::unique_ptr<CObject> back(RUNTIME_CLASS(Vertex)->CreateObject());
    back->Serialize(ar);
    EXPECT_EQ(static_cast<Vertex*>(back.get())->m_y, 40000);

    // The default Serialize writes nothing.
    CMemFile empty;
    CArchive store(&empty, CArchive::store);
    Vertex().CObject::Serialize(store);
    store.Close();
    EXPECT_EQ(empty.GetLength(), 0u);
}

TEST(CMemFileTest, FixedAndGrowableBlocks) {
    std::uint8_t fixed[4] = {1, 2, 3, 4};
    CMemFile window(fixed, sizeof fixed);
    EXPECT_EQ(window.GetLength(), 4u);
    window.Seek(2, CFile::begin);
    window.Write("ab", 2);
    EXPECT_EQ(fixed[2], 'a');
    try {
        window.Write("c", 1);
        ADD_FAILURE() << "a fixed block grew";
    } catch (CException* e) {
        EXPECT_TRUE(e->IsKindOf(RUNTIME_CLASS(CMemoryException)));
        e->Delete();  // the shared memory exception survives this
    }
    EXPECT_EQ(window.Detach(), fixed);

    CMemFile file(16);
    file.Seek(5, CFile::begin);
    file.Write("z", 1);
    EXPECT_EQ(Contents(file), (Bytes{0, 0, 0, 0, 0, 'z'}));
    file.SetLength(2);
    file.Seek(4, CFile::begin);
    file.Write("q", 1);
    EXPECT_EQ(Contents(file), (Bytes{0, 0, 0, 0, 'q'}));
    try {
        file.Seek(-1, CFile::begin);
        ADD_FAILURE() << "seek before the start";
    } catch (CFileException* e) {
        EXPECT_EQ(e->m_cause, CFileException::badSeek);
        e->Delete();
    }
    // A size no process can hold (a -1 by mistake) is refused, file unchanged.
    for (const std::uint64_t huge : {~0ULL, ~0ULL >> 1}) {
        try {
            file.SetLength(huge);
            ADD_FAILURE() << "grew to " << huge;
        } catch (CMemoryException* e) {
            e->Delete();
        }
    }
    file.Seek(static_cast<std::int64_t>(~0ULL >> 1), CFile::begin);
    try {
        file.Write("x", 1);
        ADD_FAILURE() << "wrote at the end of the address space";
    } catch (CMemoryException* e) {
        e->Delete();
    }
    std::uint8_t* block = file.Detach();
    EXPECT_EQ(block[4], 'q');
    std::free(block);
    EXPECT_EQ(file.GetLength(), 0u);
}

}  // namespace
