// interlocked.h - operations on shared numbers and pointers that happen at once, each a full barrier.
//
// The results are the platform's: increment and decrement give the new value, exchange and add the old one.
#pragma once

#include "windef.h"

inline LONG InterlockedIncrement(volatile LONG* addend) noexcept {
    return __atomic_add_fetch(addend, 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedDecrement(volatile LONG* addend) noexcept {
    return __atomic_sub_fetch(addend, 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedExchange(volatile LONG* target, LONG value) noexcept {
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedExchangeAdd(volatile LONG* addend, LONG value) noexcept {
    return __atomic_fetch_add(addend, value, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedCompareExchange(volatile LONG* destination, LONG exchange, LONG comparand) noexcept {
    __atomic_compare_exchange_n(destination, &comparand, exchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}
inline LONG InterlockedAnd(volatile LONG* destination, LONG value) noexcept {
    return __atomic_fetch_and(destination, value, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedOr(volatile LONG* destination, LONG value) noexcept {
    return __atomic_fetch_or(destination, value, __ATOMIC_SEQ_CST);
}

inline LONG64 InterlockedIncrement64(volatile LONG64* addend) noexcept {
    return __atomic_add_fetch(addend, 1, __ATOMIC_SEQ_CST);
}
inline LONG64 InterlockedDecrement64(volatile LONG64* addend) noexcept {
    return __atomic_sub_fetch(addend, 1, __ATOMIC_SEQ_CST);
}
inline LONG64 InterlockedExchange64(volatile LONG64* target, LONG64 value) noexcept {
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}
inline LONG64 InterlockedExchangeAdd64(volatile LONG64* addend, LONG64 value) noexcept {
    return __atomic_fetch_add(addend, value, __ATOMIC_SEQ_CST);
}
inline LONG64 InterlockedCompareExchange64(volatile LONG64* destination, LONG64 exchange, LONG64 comparand) noexcept {
    __atomic_compare_exchange_n(destination, &comparand, exchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}

inline PVOID InterlockedExchangePointer(PVOID volatile* target, PVOID value) noexcept {
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}
inline PVOID InterlockedCompareExchangePointer(PVOID volatile* destination, PVOID exchange, PVOID comparand) noexcept {
    __atomic_compare_exchange_n(destination, &comparand, exchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}
