// The orders of the index keys, by key type.
#pragma once

namespace nvk {

// The type that hands the comparison to the index file's virtual hook.
inline constexpr int kKeyTypeDerived = 255;

// Negative, zero or positive as a is below, equal to or above b, for every
// key type but kKeyTypeDerived. Keys are read unaligned; a string key (type
// 0) is not bounded by keySize.
long CompareKeys(int keyType, int keySize, const void* a, const void* b);

// keySize bytes compared as unsigned bytes: -1, 0 or 1.
long CompareBytes(const void* a, const void* b, int keySize);

}  // namespace nvk
