#ifndef IMGTUNE_COLOR_LANES_H
#define IMGTUNE_COLOR_LANES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "common/arithmetic.h"
#include "common/vector.h"

// A block's fields side by side.
//
// N bytes are taken sixteen at a time, and four of them in the end where N asks for it.

namespace imgtune {

/// N fields from `first` on, of those that are taken at once: 16 or 4.
template <std::size_t N>
struct Part {
    static constexpr std::size_t kFields = N;
    std::size_t first;
};

/// N fields of 8 bits where an image has them side by side.
template <std::size_t N>
struct ByteView {
    static constexpr std::size_t kFields = N;

    const std::uint8_t* bytes;

    std::uint8_t operator[](std::size_t j) const { return bytes[j]; }
    template <std::size_t M>
    vector::Sixteen part(Part<M> part) const {
        return vector::load<M>(bytes + part.first);
    }
};

/// Calls `operation` for every part of N fields, in order.
template <std::size_t N, class Operation>
[[gnu::always_inline]] inline void for_each_part(const Operation& operation) {
    static_assert(N % 16 == 0 || N % 16 == 4);
    for (std::size_t k = 0; k < N / 16; ++k) operation(Part<16>{16 * k});
    if constexpr (N % 16 == 4) operation(Part<4>{N - 4});
}

/// N fields of 8 bits in vectors of their own.
template <std::size_t N>
struct Bytes {
    static constexpr std::size_t kFields = N;

    vector::Sixteen parts[(N + 15) / 16];

    std::uint8_t operator[](std::size_t j) const {
        std::uint8_t bytes[16];
        vector::store<16>(bytes, parts[j / 16]);
        return bytes[j % 16];
    }
    template <std::size_t M>
    vector::Sixteen part(Part<M> part) const {
        return parts[part.first / 16];
    }

    void store(std::uint8_t* to) const {
        for_each_part<N>([&]<std::size_t M>(Part<M> part) {
            vector::store<M>(to + part.first, parts[part.first / 16]);
        });
    }
};

/// N values of 32 bits: fields of other widths, and results before they are cut to their field.
template <std::size_t N>
struct Lanes {
    static constexpr std::size_t kFields = N;

    alignas(16) std::int32_t v[N];

    std::int32_t operator[](std::size_t j) const { return v[j]; }
};

/// The bytes whose parts are `operation` of them.
template <std::size_t N, class Operation>
[[gnu::always_inline]] inline Bytes<N> each_part(const Operation& operation) {
    Bytes<N> out;
    for_each_part<N>([&](auto part) { out.parts[part.first / 16] = operation(part); });
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

/// The low 8 bits of every value.
template <std::size_t N>
Bytes<N> cut_to_bytes(const vector::Values<N>& values) {
    return {{vector::cut(values)}};
}
template <std::size_t N>
Bytes<N> cut_to_bytes(const Lanes<N>& lanes) {
    return each_part<N>([&]<std::size_t M>(Part<M> part) {
        vector::Values<M> values;
        for (std::size_t k = 0; k < M / 4; ++k) {
            values.quad[k] = vector::load(lanes.v + part.first + 4 * k);
        }
        return vector::cut(values);
    });
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
    return each_part<N>(
        [&](auto part) { return vector::clip(bytes.part(part), a.part(part), b.part(part)); });
}

/// step_toward of every byte: the target limited to what a step reaches, which for bytes ends at 0
/// and 255.
template <std::size_t N, class Source>
Bytes<N> step_all(const Source& previous, const Bytes<N>& target, std::uint32_t step) {
    const auto reach = static_cast<std::uint8_t>(step > 255 ? 255 : step);
    return each_part<N>(
        [&](auto part) { return vector::step(previous.part(part), target.part(part), reach); });
}

}  // namespace imgtune

#endif
