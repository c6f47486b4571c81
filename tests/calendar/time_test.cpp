#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "nvk/afx/archive.h"
#include "nvk/afx/mem_file.h"
#include "nvk/calendar/cbtime.h"
#include "os/api/time_zone.h"

// These run in Greenwich time (TZ=UTC0); the suites of zone_test.cpp run in
// processes of their own, each in its zone.
namespace {

TEST(TimeTest, TheCountsRange) {
    EXPECT_EQ(CBTime::RefDate, CBDate(1, 1, 1901));
    EXPECT_EQ(CBTime::MaxDate, CBDate(5, 2, 2037));
    EXPECT_TRUE(CBTime::AssertDate(CBTime::MaxDate));
    EXPECT_FALSE(CBTime::AssertDate(CBTime::MaxDate + 1));
    EXPECT_FALSE(CBTime::AssertDate(CBDate(31, 12, 1900)));

    const CBTime last(0xFFFFFFFFu);  // 6 February 2037, 06:28:15
    EXPECT_EQ(CBDate(last.Seconds() / 86400, 0), CBDate(6, 2, 2037));
    EXPECT_EQ(last.HourGMT(), 6u);
    EXPECT_EQ(last.MinuteGMT(), 28u);
    EXPECT_EQ(last.Second(), 15u);
    EXPECT_EQ(CBTime(CBTime::MaxDate, 23, 59, 59).Seconds(), 49710u * 86400 - 1);
    EXPECT_FALSE(CBTime(CBDate(CString()), 12, 0, 0).IsValid());
}

TEST(TimeTest, TextIsReadInFixedColumns) {
    const CBTime short_(CString("12:30"));
    EXPECT_EQ(short_.Hour(), 12u);
    EXPECT_EQ(short_.Minute(), 30u);
    EXPECT_EQ(short_.Second(), 0u);
    EXPECT_EQ(CBTime(CString("12:30:45")).Second(), 45u);
    const CBTime four(CString("12:3"));
    EXPECT_EQ(four.Minute(), 3u);
    EXPECT_EQ(four.Second(), 0u);
    EXPECT_EQ(CBTime(CString("07h05m09")).AsString(), "07:05");
    EXPECT_EQ(CBDate(CBTime(CString("")).Seconds() / 86400, 0), CBDate());  // midnight today
    EXPECT_EQ(CBTime(CString("12:30")), CBTime(12, 30, 0));
}

TEST(TimeTest, CompareToNeverOrders) {
    const CBTime early(1000u);
    const CBTime late(2000u);
    EXPECT_EQ(early.CompareTo(late), 1);
    EXPECT_EQ(late.CompareTo(early), 1);
    EXPECT_EQ(early.CompareTo(CBTime(1000u)), 0);
    EXPECT_LT(early, late);
    CBTime wrapped = early;
    wrapped -= 1001;
    EXPECT_EQ(wrapped.Seconds(), 0xFFFFFFFFu);  // unchecked
}

TEST(TimeTest, DatabaseRecords) {
    const bdTime none = CBTime(0u).ToBtrTime();
    EXPECT_EQ(none.hundredths, 0xFF);
    EXPECT_EQ(none.seconds, 0xFF);
    EXPECT_EQ(none.minutes, 0xFF);
    EXPECT_EQ(none.hours, 0xFF);
    // Read back, those bytes are hour 255, which is not rejected.
    EXPECT_TRUE(CBTime(none).IsValid());

    const bdTime record{99, 45, 30, 12};
    const CBTime time(record);
    EXPECT_EQ(time, CBTime(12, 30, 45));
    const bdTime back = time.ToBtrTime();
    EXPECT_EQ(back.hundredths, 0);
    EXPECT_EQ(back.seconds, 45);
    EXPECT_EQ(back.minutes, 30);
    EXPECT_EQ(back.hours, 12);
}

TEST(TimeTest, ArchiveFormIsTheCountAlone) {
    CBTime stored(0x01020304u);
    CMemFile file;
    {
        CArchive archive(&file, CArchive::store);
        stored.Serialize(archive);
        archive.Close();
    }
    ASSERT_EQ(file.GetLength(), 4u);
    std::vector<unsigned char> bytes(4);
    file.SeekToBegin();
    file.Read(bytes.data(), 4);
    EXPECT_EQ(bytes, (std::vector<unsigned char>{4, 3, 2, 1}));

    file.SeekToBegin();
    CBTime loaded(0u);
    CArchive archive(&file, CArchive::load);
    loaded.Serialize(archive);
    EXPECT_EQ(loaded, stored);
}

TEST(TimeTest, RuntimeClassMakesNowAndPrintFlagChangesNothing) {
    const CBTime before;
    std::unique_ptr<CObject> object(RUNTIME_CLASS(CBTime)->CreateObject());
    ASSERT_TRUE(object);
    EXPECT_EQ(object->GetRuntimeClass()->m_lpszClassName, std::string("CBTime"));
    EXPECT_LE(static_cast<CBTime*>(object.get())->Seconds() - before.Seconds(), 2u);

    const CBTime noon(CBDate(1, 7, 2024), 12, 0, 0);
    EXPECT_EQ(CBTime::PrintDate(1), 0);
    EXPECT_EQ(noon.AsString(), "12:00");
    EXPECT_EQ(CBTime::PrintDate(0), 1);
}

}  // namespace
