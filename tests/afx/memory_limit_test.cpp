// Exhausted memory must leave the framework layer as CMemoryException*: the
// applications' handlers catch CException*, and a std::bad_alloc ends them.
// The test runs itself again in a child process whose address space is
// limited, takes nearly all of that space, and then asks for more.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "nvk/afx/archive.h"
#include "nvk/afx/cstring.h"
#include "nvk/afx/exceptions.h"
#include "nvk/afx/mem_file.h"
#include "os/api/process.h"
#include "os/api/sync.h"
#include "support/child_process.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define NVK_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define NVK_SANITIZED 1
#endif
#endif

namespace {

constexpr const char* kChildFlag = "NVK_AFX_UNDER_MEMORY_LIMIT";
constexpr int kLarge = 64 << 20;  // more than is left once the space is taken

// Takes the address space in blocks until none is left, then gives back
// enough for the small allocations of the checks themselves.
class AddressSpaceHog {
public:
    AddressSpaceHog() {
        for (;;) {
            void* block = std::malloc(kBlock);
            if (block == nullptr) {
                break;
            }
            m_blocks.push_back(block);
        }
        for (int i = 0; i < 2 && !m_blocks.empty(); ++i) {
            std::free(m_blocks.back());
            m_blocks.pop_back();
        }
    }
    ~AddressSpaceHog() {
        for (void* block : m_blocks) {
            std::free(block);
        }
    }
    AddressSpaceHog(const AddressSpaceHog&) = delete;
    AddressSpaceHog& operator=(const AddressSpaceHog&) = delete;

private:
    static constexpr std::size_t kBlock = 16 << 20;
    std::vector<void*> m_blocks;
};

template <class Action>
void ExpectMemoryException(const char* what, Action action) {
    try {
        action();
        ADD_FAILURE() << what << ": no exception";
    } catch (CMemoryException* e) {
        e->Delete();
    } catch (CException* e) {
        e->Delete();
        ADD_FAILURE() << what << ": another framework exception";
    }
}

void RunUnderTheLimit() {
    // A string as long as the memory left, in an archive, made beforehand.
    CMemFile data;
    {
        CArchive ar(&data, CArchive::store);
        ar << CString('s', kLarge / 2);
    }
    data.SeekToBegin();
    CArchive loading(&data, CArchive::load);
    AddressSpaceHog hog;

    ExpectMemoryException("construction", [] { CString s('x', kLarge); });
    ExpectMemoryException("GetBuffer", [] { CString().GetBuffer(kLarge); });
    ExpectMemoryException("GetBufferSetLength", [] { CString().GetBufferSetLength(kLarge); });
    ExpectMemoryException("Format", [] { CString().Format("%*d", kLarge, 1); });
    ExpectMemoryException("archive buffer", [&] { CArchive ar(&data, CArchive::load, kLarge); });
    ExpectMemoryException("archive string", [&] {
        CString s;
        loading >> s;
    });
    ExpectMemoryException("memory file", [] { CMemFile(1024).SetLength(kLarge); });
}

TEST(AfxMemoryLimit, ExhaustedMemoryIsTheFrameworksException) {
    if (std::getenv(kChildFlag) != nullptr) {
        RunUnderTheLimit();
        return;
    }
#ifdef NVK_SANITIZED
    GTEST_SKIP() << "the sanitizers reserve their own shadow memory";
#else
    // The shell sets the limit; it wants the program's POSIX name.
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    std::string line = std::string("/bin/sh -c \"ulimit -v 1000000 && ") + kChildFlag +
                       "=1 exec '" + self +
                       "' --gtest_filter=AfxMemoryLimit.ExhaustedMemoryIsTheFrameworksException\"";
    EXPECT_EQ(nvk::test::RunProcess(line, 120000), 0u)
        << line << ": the child's checks failed, or std::bad_alloc ended it";
#endif
}

}  // namespace
