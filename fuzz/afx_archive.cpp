// Loads values of every archived type from untrusted bytes: every string
// prefix, number and short ending must end in a CArchiveException*. Any other
// exception (a CMemoryException* from a length believed beyond the data, say)
// leaves the target and is a finding. The values loaded are then stored and
// loaded again: that second load must succeed, end at the end of the stored
// bytes, and give values that store to the same bytes.
//
// Input: a byte whose low 3 bits size the archive's buffer and whose high 5
// bits count the script bytes after it; the script's bytes name, in turn,
// the type of each value; the rest is the archive.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "nvk/afx/archive.h"
#include "nvk/afx/cstring.h"
#include "nvk/afx/exceptions.h"
#include "nvk/afx/mem_file.h"
#include "nvk/calendar/cbtime.h"
#include "nvk/core/chaine.h"
#include "nvk/platform/crypt_password.h"

#if defined(__SANITIZE_ADDRESS__)
#define NVK_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NVK_SANITIZED 1
#endif
#endif

#ifndef NVK_SANITIZED
// The replay's memory limit: a claim above 64 MB fails as it would in a
// small address space, so that a length believed beyond the data shows as a
// CMemoryException* (the campaign runs with libFuzzer's -malloc_limit_mb).
void* operator new(std::size_t size) {
    void* block = size <= (std::size_t{64} << 20) ? std::malloc(size == 0 ? 1 : size) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
#endif

namespace {

constexpr int kKinds = 17;
constexpr int kMaxSteps = 4096;

// One value of each archived type; a step uses the one its kind names.
struct Slot {
    bool b = false;
    char c = 0;
    signed char sc = 0;
    unsigned char uc = 0;
    short s = 0;
    unsigned short us = 0;
    int i = 0;
    unsigned u = 0;
    long long ll = 0;
    unsigned long long ull = 0;
    float f = 0;
    double d = 0;
    CString text;
    Chaine chaine;
    CBTime time{0};
    CCryptPassword password;
    std::vector<std::uint8_t> raw;
};

struct Step {
    int kind;
    Slot slot;
};

// Stores or loads the value of `kind`; false when raw bytes come out short,
// which is no error: Read returns what there is.
bool Transfer(CArchive& ar, int kind, Slot& v, unsigned rawSize) {
    const bool in = ar.IsLoading();
    switch (kind) {
        case 0:
            in ? ar >> v.b : ar << v.b;
            break;
        case 1:
            in ? ar >> v.c : ar << v.c;
            break;
        case 2:
            in ? ar >> v.sc : ar << v.sc;
            break;
        case 3:
            in ? ar >> v.uc : ar << v.uc;
            break;
        case 4:
            in ? ar >> v.s : ar << v.s;
            break;
        case 5:
            in ? ar >> v.us : ar << v.us;
            break;
        case 6:
            in ? ar >> v.i : ar << v.i;
            break;
        case 7:
            in ? ar >> v.u : ar << v.u;
            break;
        case 8:
            in ? ar >> v.ll : ar << v.ll;
            break;
        case 9:
            in ? ar >> v.ull : ar << v.ull;
            break;
        case 10:
            in ? ar >> v.f : ar << v.f;
            break;
        case 11:
            in ? ar >> v.d : ar << v.d;
            break;
        case 12:
            in ? ar >> v.text : ar << v.text;
            break;
        case 13:
            v.chaine.Serialize(ar);
            break;
        case 14:
            v.time.Serialize(ar);
            break;
        case 15:
            v.password.Serialize(ar);
            break;
        default:
            if (!in) {
                ar.Write(v.raw.data(), static_cast<unsigned>(v.raw.size()));
                break;
            }
            v.raw.resize(rawSize);
            v.raw.resize(ar.Read(v.raw.data(), rawSize));
            return v.raw.size() == rawSize;
    }
    return true;
}

std::vector<std::uint8_t> Store(std::vector<Step>& steps) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store, 64);
        for (Step& step : steps) {
            Transfer(ar, step.kind, step.slot, 0);
        }
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(file.GetLength()));
    file.SeekToBegin();
    file.Read(bytes.data(), static_cast<unsigned>(bytes.size()));
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 1u << 20) {
        return 0;
    }
    const std::size_t scriptSize = std::min<std::size_t>(data[0] >> 3, size - 1);
    const std::uint8_t* script = data + 1;
    if (scriptSize == 0) {
        return 0;
    }
    CMemFile file(const_cast<std::uint8_t*>(data + 1 + scriptSize),
                  static_cast<unsigned>(size - 1 - scriptSize));
    std::vector<Step> loaded;
    {
        CArchive ar(&file, CArchive::load, 16 + (data[0] & 7) * 13);
        try {
            for (int n = 0; n < kMaxSteps; ++n) {
                const std::uint8_t code = script[static_cast<std::size_t>(n) % scriptSize];
                Step step{code % kKinds, {}};
                if (!Transfer(ar, step.kind, step.slot, 1u + code / kKinds * 7u)) {
                    break;
                }
                loaded.push_back(std::move(step));
            }
        } catch (CArchiveException* e) {
            e->Delete();
        }
    }

    // The round trip: no exception of any kind is allowed from here on.
    const std::vector<std::uint8_t> stored = Store(loaded);
    CMemFile again(const_cast<std::uint8_t*>(stored.data()), static_cast<unsigned>(stored.size()));
    std::vector<Step> reloaded;
    {
        CArchive ar(&again, CArchive::load, 64);
        for (const Step& step : loaded) {
            Step copy{step.kind, {}};
            if (!Transfer(ar, copy.kind, copy.slot, static_cast<unsigned>(step.slot.raw.size()))) {
                std::abort();
            }
            reloaded.push_back(std::move(copy));
        }
        std::uint8_t extra;
        if (ar.Read(&extra, 1) != 0) {
            std::abort();
        }
    }
    if (Store(reloaded) != stored) {
        std::abort();
    }
    return 0;
}
