#include "nvk/platform/crypt_password.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "nvk/afx/archive.h"
#include "nvk/afx/cstring.h"
#include "nvk/afx/mem_file.h"

namespace {

using byte = CCryptPassword::byte;

// The buffer with its nibbles swapped back.
std::string Plain(const CCryptPassword& password) {
    std::string bytes;
    for (byte b : *password.GetBuffer()) {
        bytes += static_cast<char>(CCryptPassword::ReverseNibbles(b));
    }
    return bytes;
}

TEST(CryptPassword, RoundTripsAndTheLayout) {
    const std::string key = "Clef";
    for (const std::string& text : {std::string(), std::string("a"), std::string("Secret"),
                                    std::string(29, 'x'), std::string(30, 'y')}) {
        const CCryptPassword password(text.c_str(), key.c_str());
        EXPECT_EQ(password.AsChaine(), text.c_str());
        EXPECT_TRUE(password.Is(text.c_str()));
        EXPECT_EQ(password.Exists(), !text.empty());
        // The last position keeps the key stream byte, and so does the
        // terminator.
        const std::string plain = Plain(password);
        const int offset = plain[0];
        EXPECT_EQ(plain[31], key[31 % key.size()]);
        EXPECT_EQ(plain[offset + text.size() + 1], key[(offset + text.size() + 1) % key.size()]);
    }
    // From 30 characters on there is room for nothing but the password.
    const std::string longest(40, 'z');
    const CCryptPassword cut(longest.c_str(), key.c_str());
    EXPECT_EQ(Plain(cut)[0], 0);
    EXPECT_EQ(cut.AsChaine(), longest.substr(0, 31).c_str());
    EXPECT_EQ(CCryptPassword(std::string(30, 'y').c_str(), "k").GetBuffer()[0][0], 0);
}

// The offset in position 0 may leave no room in the buffer (a damaged or
// foreign buffer): reading stops at position 31 all the same.
TEST(CryptPassword, ReadingStopsAtTheEndOfTheBuffer) {
    for (int offset : {29, 30, 31, 200, 255}) {
        byte buffer[CCryptPassword::kBufferSize];
        std::fill(std::begin(buffer), std::end(buffer), byte{0x5A});
        buffer[0] = CCryptPassword::ReverseNibbles(static_cast<byte>(offset));
        const CCryptPassword password(&buffer, "");
        EXPECT_LE(password.AsChaine().Length(), std::max(0, 31 - offset)) << offset;
    }
}

TEST(CryptPassword, KeysAndComparison) {
    const CCryptPassword password("Secret", "Clef");
    EXPECT_FALSE(password.Is("secret"));
    const CCryptPassword wrongKey(password.GetBuffer(), "Autre");
    EXPECT_FALSE(wrongKey.Is("Secret"));  // a wrong text, not a failure
    EXPECT_TRUE(wrongKey == password);    // keys are not compared
    EXPECT_TRUE(CCryptPassword(password.GetBuffer(), "Clef").Is("Secret"));

    const CCryptPassword empty;
    EXPECT_EQ(empty.AsChaine(), "");
    EXPECT_FALSE(empty.Exists());
    EXPECT_EQ(empty.GetKey(), "");
    EXPECT_TRUE(CCryptPassword(password.GetBuffer(), nullptr).GetKey().IsEmpty());

    EXPECT_EQ(CCryptPassword::InvertPwdBits(0xF0, 0x3C), 0xCC);
    EXPECT_EQ(CCryptPassword::ReverseNibbles(0xA5), 0x5A);

    CString hex;
    password.PrintTo(hex);
    EXPECT_EQ(hex.GetLength(), 64);
    EXPECT_EQ(hex.Find('A'), -1);
}

TEST(CryptPassword, ArchiveRoundTrip) {
    const CCryptPassword password("Secret", "Clef");
    CMemFile file;
    {
        CArchive archive(&file, CArchive::store);
        CCryptPassword(password).Serialize(archive);
        archive << Chaine("0a1");  // a short buffer text, and its key
        archive << Chaine("k");
        archive.Close();
    }
    file.SeekToBegin();
    CArchive archive(&file, CArchive::load);
    CCryptPassword loaded;
    loaded.Serialize(archive);
    CString before, after;
    password.PrintTo(before);
    loaded.PrintTo(after);
    EXPECT_EQ(after, before);
    EXPECT_EQ(loaded.AsChaine(), "Secret");
    EXPECT_EQ(loaded.GetKey(), "Clef");

    loaded.Serialize(archive);
    EXPECT_EQ(loaded.GetBuffer()[0][0], 0x0A);
    EXPECT_EQ(loaded.GetBuffer()[0][1], 0);
    EXPECT_EQ(loaded.GetKey(), "k");
}

}  // namespace
