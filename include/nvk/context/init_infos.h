// The records of the init-object registry: EInitObjectID, the name of an
// entry, and EInitInfos, what an entry knows of itself.
#pragma once

#include "nvk/core/key_compare.h"

// A fixed text of up to 63 characters. Ids compare without regard to case, as
// the C library's _stricmp does.
class EInitObjectID {
public:
    static constexpr int kMaxLength = 63;

    EInitObjectID() = default;
    // Copies at most kMaxLength characters of `text`.
    explicit EInitObjectID(const char* text);
    EInitObjectID(const char* text, int length);

    const char* Text() const { return m_Text; }

    // The difference of the first pair of characters that differ after
    // folding A-Z to lower case, or 0.
    static int CompareNoCase(const EInitObjectID& a, const EInitObjectID& b);

private:
    char m_Text[kMaxLength + 1] = {};
};

// Unsorted maps take the raw difference; sorted maps need it as -1, 0 or 1.
template <>
struct nvk::KeyCompare<EInitObjectID> {
    static int Equal(const EInitObjectID& key, const EInitObjectID& other) {
        return EInitObjectID::CompareNoCase(key, other);
    }
    static int Order(const EInitObjectID& key, const EInitObjectID& other) {
        const int difference = EInitObjectID::CompareNoCase(key, other);
        return difference < 0 ? -1 : (difference > 0 ? 1 : 0);
    }
};

// Called for each level the registry runs; false reports a failure, which
// does not stop the run.
using EInitCallback = bool (*)(int level, void* context);

struct EInitInfos {
    EInitInfos() = default;
    // The id is `sourceName` cut to 63 characters, or with a `line`,
    // `sourceName` cut to 55 followed by the line as "(000521)".
    // `dependencies` lists ids separated by ";" and must outlive the entry.
    EInitInfos(EInitCallback callback, void* context, const char* sourceName,
               const char* dependencies, int line);

    EInitCallback Callback = nullptr;
    void* Context = nullptr;
    EInitObjectID Id;
    const char* Dependencies = nullptr;
    // Set as the ordering enters the entry, before its dependencies, not once
    // it stands in the order: a dependency cycle then ends where it closes
    // instead of recursing without end.
    bool Visited = false;
};
