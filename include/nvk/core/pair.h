// EPair: the element of every map, the key first, then the value, both held
// by value.
#pragma once

template <class K, class V>
struct EPair {
    using KeyType = K;
    using ValueType = V;

    K Key;
    V Value;
};
