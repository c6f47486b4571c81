#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/memory.h"
#include "os/api/sync.h"
#include "os_test_support.h"

namespace {

using namespace nvk::os;

TEST(VirtualMemory, CommittedPagesAreZeroedAndWritable) {
    auto* bytes = static_cast<unsigned char*>(
        VirtualAlloc(nullptr, 10000, MEM_COMMIT | MEM_RESERVE | MEM_TOP_DOWN, PAGE_READWRITE));
    ASSERT_NE(bytes, nullptr);
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(bytes[i], 0);
    }
    std::memset(bytes, 0xAB, 10000);
    EXPECT_TRUE(VirtualFree(bytes, 0, MEM_RELEASE));
}

TEST(VirtualMemory, ReserveThenCommitInside) {
    auto* base = static_cast<char*>(VirtualAlloc(nullptr, 1 << 20, MEM_RESERVE, PAGE_READWRITE));
    ASSERT_NE(base, nullptr);
    char* page = static_cast<char*>(VirtualAlloc(base + 8192, 4096, MEM_COMMIT, PAGE_READWRITE));
    ASSERT_EQ(page, base + 8192);
    page[0] = 'x';
    page[4095] = 'y';
    EXPECT_TRUE(VirtualFree(page, 4096, MEM_DECOMMIT));
    // Committing again gives fresh zeros.
    ASSERT_NE(VirtualAlloc(page, 4096, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(page[0], 0);
    EXPECT_TRUE(VirtualFree(base, 0, MEM_RELEASE));
}

TEST(VirtualMemory, RefusesWhatItDoesNotKnow) {
    int local = 0;
    EXPECT_EQ(VirtualAlloc(&local, 4096, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_ADDRESS);
    EXPECT_EQ(VirtualAlloc(nullptr, 0, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);

    void* block = VirtualAlloc(nullptr, 8192, MEM_COMMIT, PAGE_READWRITE);
    EXPECT_FALSE(VirtualFree(block, 8192, MEM_RELEASE));  // release takes size 0
    // Only the region's base releases it (the address goes down to its page).
    EXPECT_FALSE(VirtualFree(static_cast<char*>(block) + 4096, 0, MEM_RELEASE));
    EXPECT_TRUE(VirtualFree(block, 0, MEM_RELEASE));
    EXPECT_FALSE(VirtualFree(block, 0, MEM_RELEASE));
}

HANDLE MemorySection(DWORD size, const char* name = nullptr, DWORD protect = PAGE_READWRITE) {
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, protect | SEC_COMMIT, 0, size, name);
}

TEST(FileMapping, NameGoesWithLastHandleWhileViewsRemain) {
    HANDLE mapping = MemorySection(12, test::ObjectName("nvk-test-section"));
    ASSERT_NE(mapping, nullptr);
    auto* view = static_cast<unsigned char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 12));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::memcmp(view, "\0\0\0\0\0\0\0\0\0\0\0\0", 12), 0);
    view[4] = 42;

    HANDLE again = MemorySection(12, test::ObjectName("Local\\nvk-test-section"));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    // Each view is a view of its own of the same bytes.
    auto* second = static_cast<unsigned char*>(MapViewOfFile(again, FILE_MAP_WRITE, 0, 0, 12));
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, view);
    EXPECT_EQ(second[4], 42);
    EXPECT_TRUE(UnmapViewOfFile(second + 7));  // any address inside the view
    EXPECT_FALSE(UnmapViewOfFile(second));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_ADDRESS);

    EXPECT_TRUE(CloseHandle(again));
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(OpenFileMappingA(FILE_MAP_READ, FALSE, test::ObjectName("nvk-test-section")),
              nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(view[4], 42);  // the view keeps its bytes
    EXPECT_TRUE(UnmapViewOfFile(view));
}

TEST(FileMapping, SizesOffsetsAndErrors) {
    HANDLE mapping = MemorySection(12);
    ASSERT_NE(mapping, nullptr);
    // The size is rounded up to whole pages; views start at the granularity.
    void* page = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 4096);
    EXPECT_NE(page, nullptr);
    UnmapViewOfFile(page);
    EXPECT_EQ(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 1 << 20), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    HANDLE large = MemorySection(1 << 20);
    EXPECT_EQ(MapViewOfFile(large, FILE_MAP_WRITE, 0, 4096, 16), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MAPPED_ALIGNMENT);
    EXPECT_NE(MapViewOfFile(large, FILE_MAP_WRITE, 0, 65536, 16), nullptr);
    EXPECT_EQ(MapViewOfFile(nullptr, FILE_MAP_WRITE, 0, 0, 16), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(MemorySection(0), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(CloseHandle(large));
    EXPECT_TRUE(CloseHandle(mapping));
}

// A section of memory is committed whole when made: a terabyte fails with an
// error code instead of ending the process.
TEST(FileMapping, MoreThanTheCommitLimitIsRefused) {
    for (const char* name :
         {static_cast<const char*>(nullptr), test::ObjectName("nvk-test-huge")}) {
        EXPECT_EQ(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 256, 0, name),
                  nullptr);
        EXPECT_EQ(GetLastError(), ERROR_COMMITMENT_LIMIT);
    }
}

// Pages resident in this process, from the system's own count.
long ResidentPages() {
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident;
}

TEST(FileMapping, MemoryIsCommittedAsItIsTouched) {
    const long before = ResidentPages();
    HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 1u << 30,
                                        test::ObjectName("nvk-test-lazy"));
    ASSERT_NE(mapping, nullptr);
    auto* view = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
    ASSERT_NE(view, nullptr);
    view[0] = 1;
    view[(1u << 30) - 1] = 2;
    EXPECT_LT(ResidentPages() - before, 4096);  // a gigabyte is 262144 pages
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_TRUE(CloseHandle(mapping));
}

TEST(FileMapping, ViewsNeedTheHandlesAccess) {
    HANDLE mapping = MemorySection(16, test::ObjectName("nvk-test-access"));
    HANDLE reader = OpenFileMappingA(FILE_MAP_READ, FALSE, test::ObjectName("nvk-test-access"));
    HANDLE writer = OpenFileMappingA(FILE_MAP_WRITE, FALSE, test::ObjectName("nvk-test-access"));
    ASSERT_NE(reader, nullptr);
    ASSERT_NE(writer, nullptr);
    EXPECT_EQ(MapViewOfFile(reader, FILE_MAP_WRITE, 0, 0, 16), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(MapViewOfFile(writer, FILE_MAP_READ, 0, 0, 16), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    void* view = MapViewOfFile(reader, FILE_MAP_READ, 0, 0, 16);
    EXPECT_NE(view, nullptr);
    UnmapViewOfFile(view);
    EXPECT_EQ(OpenFileMappingA(FILE_MAP_READ, FALSE, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    HANDLE readOnly = MemorySection(16, nullptr, PAGE_READONLY);
    EXPECT_EQ(MapViewOfFile(readOnly, FILE_MAP_WRITE, 0, 0, 16), nullptr);
    const DWORD error = GetLastError();  // Windows versions answer either
    EXPECT_TRUE(error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_PARAMETER) << error;
    for (HANDLE handle : {mapping, reader, writer, readOnly}) {
        EXPECT_TRUE(CloseHandle(handle));
    }
}

// A read-only section opens for writing (the rights asked are checked
// against its security) but gives no writable view.
TEST(FileMapping, AReadOnlySectionOpenedToWriteGivesNoWritableView) {
    HANDLE readOnly = MemorySection(16, test::ObjectName("nvk-test-read-only"), PAGE_READONLY);
    HANDLE opened = OpenFileMappingA(FILE_MAP_WRITE, FALSE, test::ObjectName("nvk-test-read-only"));
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(MapViewOfFile(opened, FILE_MAP_WRITE, 0, 0, 16), nullptr);
    const DWORD error = GetLastError();
    EXPECT_TRUE(error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_PARAMETER) << error;
    EXPECT_TRUE(CloseHandle(opened));
    EXPECT_TRUE(CloseHandle(readOnly));
}

std::string Contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(FileMapping, OfAFileShowsAndWritesItsBytes) {
    test::TempFolder folder;
    const std::string path = folder / "mapped";
    std::ofstream(path, std::ios::binary) << "hello";
    HANDLE file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, 8192,
                                        test::ObjectName("nvk-test-file"));
    ASSERT_NE(mapping, nullptr);
    EXPECT_TRUE(CloseHandle(file));                      // the mapping keeps the file
    EXPECT_EQ(std::filesystem::file_size(path), 8192u);  // grown to the size asked
    auto* view = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::string(view, 5), "hello");
    view[0] = 'J';
    // Another process opens it by name and sees and writes the same bytes.
    EXPECT_EQ(
        test::RunHelper(std::string("mapread ") + test::ObjectName("nvk-test-file") + " Jello"),
        0u);
    EXPECT_EQ(test::RunHelper(std::string("mapwrite ") + test::ObjectName("nvk-test-file") + " Y"),
              0u);
    EXPECT_EQ(view[0], 'Y');
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(Contents(path).substr(0, 6), std::string("Yello\0", 6));

    const std::string empty = folder / "empty";
    std::ofstream(empty).flush();
    file = CreateFileA(empty.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_EQ(CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_INVALID);
    EXPECT_EQ(CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, 16, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);  // the handle can't write
    EXPECT_TRUE(CloseHandle(file));
}

DWORD SetEnd(HANDLE file, LONG size) {
    SetFilePointer(file, size, nullptr, FILE_BEGIN);
    return SetEndOfFile(file) ? ERROR_SUCCESS : GetLastError();
}

// A file is not cut under a section of it, whichever handle asks and while
// its handle or a view is open, here or in another process; it may grow.
TEST(FileMapping, AFileWithASectionOpenDoesNotShrink) {
    test::TempFolder folder;
    const std::string path = folder / "sized";
    std::ofstream(path, std::ios::binary) << std::string(8192, 'a');
    const DWORD shared = FILE_SHARE_READ | FILE_SHARE_WRITE;
    HANDLE file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, shared, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    HANDLE other = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, shared, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 4096, nullptr);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(SetEnd(file, 100), ERROR_USER_MAPPED_FILE);
    EXPECT_EQ(SetEnd(other, 0), ERROR_USER_MAPPED_FILE);
    EXPECT_EQ(SetEnd(other, 8192), ERROR_SUCCESS);
    EXPECT_EQ(SetEnd(file, 12288), ERROR_SUCCESS);
    EXPECT_EQ(CreateFileA(path.c_str(), GENERIC_WRITE, shared, nullptr, TRUNCATE_EXISTING,
                          FILE_ATTRIBUTE_NORMAL, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_USER_MAPPED_FILE);
    const auto* view = static_cast<const char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0));
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(SetEnd(other, 0), ERROR_USER_MAPPED_FILE);  // the view keeps the section
    EXPECT_EQ(view[4095], 'a');
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_EQ(SetEnd(other, 2000), ERROR_SUCCESS);
    EXPECT_EQ(std::filesystem::file_size(path), 2000u);
    {
        test::HeldByHelper helper(folder, path + " " + std::to_string(GENERIC_READ) + " " +
                                              std::to_string(shared) + " " +
                                              std::to_string(OPEN_EXISTING) + " map 0 0");
        ASSERT_TRUE(helper.holding());
        EXPECT_EQ(SetEnd(file, 1000), ERROR_USER_MAPPED_FILE);
        EXPECT_EQ(SetEnd(file, 3000), ERROR_SUCCESS);
        EXPECT_EQ(helper.Release(), 0u);
    }
    EXPECT_EQ(SetEnd(file, 1000), ERROR_SUCCESS);
    EXPECT_TRUE(CloseHandle(other));
    EXPECT_TRUE(CloseHandle(file));
}

std::size_t OpenDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// A reader keeps many windows of a file mapped: they must not hold a
// descriptor each.
TEST(FileMapping, TheViewsOfAFileShareItsDescriptor) {
    test::TempFolder folder;
    const std::string path = folder / "windows";
    std::ofstream(path, std::ios::binary) << std::string(65536, 'w');
    HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    const std::size_t before = OpenDescriptors();
    std::vector<void*> views;
    for (int i = 0; i < 200; ++i) {
        HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
        views.push_back(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0));
        CloseHandle(mapping);
        ASSERT_NE(views.back(), nullptr);
    }
    EXPECT_LE(OpenDescriptors(), before + 1);
    for (void* view : views) {
        UnmapViewOfFile(view);
    }
    EXPECT_EQ(OpenDescriptors(), before);
    CloseHandle(file);
}

TEST(FileMapping, SharedWithAnotherProcess) {
    HANDLE mapping = MemorySection(100, test::ObjectName("nvk-test-shared-bytes"));
    auto* view = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 100));
    ASSERT_NE(view, nullptr);
    std::strcpy(view, "from parent");
    EXPECT_EQ(test::RunHelper(std::string("mapread ") + test::ObjectName("nvk-test-shared-bytes") +
                              " from-parent"),
              1u);
    EXPECT_EQ(test::RunHelper(std::string("mapread ") + test::ObjectName("nvk-test-shared-bytes") +
                              " from"),
              0u);
    EXPECT_EQ(test::RunHelper(std::string("mapwrite ") +
                              test::ObjectName("Local\\nvk-test-shared-bytes") + " child"),
              0u);
    EXPECT_EQ(std::string(view), "childparent");
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_TRUE(CloseHandle(mapping));
}

}  // namespace
