#ifndef IMGTUNE_COLOR_LANES_H
#define IMGTUNE_COLOR_LANES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "common/arithmetic.h"
#include "common/vector.h"

// A block's fields side by side.
//
// N bytes are taken sixteen at a time. The last sixteen may share fields with those before: nothing
// but the N fields is read or written.

namespace imgtune {

/// How many sixteens N fields are taken in.
template <std::size_t N>
inline constexpr std::size_t kSixteens = (N + 15) / 16;

/// The first field of the k-th sixteen.
template <std::size_t N>
constexpr std::size_t first_of_sixteen(std::size_t k) {
    static_assert(N >= 16);
    return 16 * k < N - 16 ? 16 * k : N - 16;
}

/// N fields of 8 bits where an image has them side by side.
template <std::size_t N>
struct ByteView {
    static constexpr std::size_t kFields = N;

    const std::uint8_t* bytes;

    std::uint8_t operator[](std::size_t j) const { return bytes[j]; }
    vector::Sixteen sixteen(std::size_t k) const {
        return vector::load(bytes + first_of_sixteen<N>(k));
    }
};

/// N fields of 8 bits in vectors of their own.
template <std::size_t N>
struct Bytes {
    static constexpr std::size_t kFields = N;

    vector::Sixteen sixteens[kSixteens<N>];

    std::uint8_t operator[](std::size_t j) const {
        const std::size_t k = std::min(j / 16, kSixteens<N> - 1);
        std::uint8_t bytes[16];
        vector::store(bytes, sixteens[k]);
        return bytes[j - first_of_sixteen<N>(k)];
    }
    vector::Sixteen sixteen(std::size_t k) const { return sixteens[k]; }

    void store(std::uint8_t* to) const {
        for (std::size_t k = 0; k < kSixteens<N>; ++k) {
            vector::store(to + first_of_sixteen<N>(k), sixteens[k]);
        }
    }
};

/// N values of 32 bits: fields of other widths, and results before they are cut to their field.
template <std::size_t N>
struct Lanes {
    static constexpr std::size_t kFields = N;

    alignas(16) std::int32_t v[N];

    std::int32_t operator[](std::size_t j) const { return v[j]; }
};

/// The bytes whose k-th sixteen is `operation` of k and of its first field.
template <std::size_t N, class Operation>
[[gnu::always_inline]] inline Bytes<N> each_sixteen(const Operation& operation) {
    Bytes<N> out;
    for (std::size_t k = 0; k < kSixteens<N>; ++k) {
        out.sixteens[k] = operation(k, first_of_sixteen<N>(k));
    }
    return out;
}

template <std::size_t N, class Operation>
Lanes<N> each_lane(const Operation& operation) {
    Lanes<N> out;
    for (std::size_t j = 0; j < N; ++j) out.v[j] = operation(j);
    return out;
}

// Modulo 2^32.
template <std::size_t N>
Lanes<N> operator+(const Lanes<N>& a, const Lanes<N>& b) {
    return each_lane<N>([&](std::size_t j) { return wrap_add(a.v[j], b.v[j]); });
}
template <std::size_t N>
Lanes<N> operator-(const Lanes<N>& a, const Lanes<N>& b) {
    return each_lane<N>([&](std::size_t j) { return wrap_sub(a.v[j], b.v[j]); });
}
template <std::size_t N>
Lanes<N> times_32(const Lanes<N>& a) {
    return each_lane<N>([&](std::size_t j) { return as_signed(as_unsigned(a.v[j]) << 5); });
}
template <std::size_t N>
void store(std::int32_t* to, const Lanes<N>& lanes) {
    std::copy_n(lanes.v, N, to);
}

/// The low 8 bits of every lane.
template <std::size_t N>
Bytes<N> cut_to_bytes(const Lanes<N>& lanes) {
    return each_sixteen<N>(
        [&](std::size_t, std::size_t first) { return vector::cut(lanes.v + first); });
}
template <std::size_t N>
const Bytes<N>& cut_to_bytes(const Bytes<N>& bytes) {
    return bytes;
}

/// Unsigned lanes limited to 255.
template <std::size_t N>
Bytes<N> saturate_to_bytes(const Lanes<N>& lanes) {
    return cut_to_bytes(each_lane<N>([&](std::size_t j) {
        const std::uint32_t v = as_unsigned(lanes.v[j]);
        return as_signed(v > 255 ? 255 : v);
    }));
}

/// clip of every byte between two others.
template <std::size_t N, class Source>
Bytes<N> clip_all(const Bytes<N>& bytes, const Source& a, const Source& b) {
    return each_sixteen<N>([&](std::size_t k, std::size_t) {
        return vector::clip(bytes.sixteen(k), a.sixteen(k), b.sixteen(k));
    });
}

/// step_toward of every byte: the target limited to what a step reaches, which for bytes ends at 0
/// and 255.
template <std::size_t N, class Source>
Bytes<N> step_all(const Source& previous, const Bytes<N>& target, std::uint32_t step) {
    const auto reach = static_cast<std::uint8_t>(step > 255 ? 255 : step);
    return each_sixteen<N>([&](std::size_t k, std::size_t) {
        return vector::step(previous.sixteen(k), target.sixteen(k), reach);
    });
}

}  // namespace imgtune

#endif
