#ifndef IMGTUNE_COMMON_VECTOR_VALUES_H
#define IMGTUNE_COMMON_VECTOR_VALUES_H

#include <cstddef>

namespace imgtune {

/// N values of 32 bits in the Quads of any machine, and what is done to each Quad alike.
template <class Quad, std::size_t N>
struct ValuesIn {
    static_assert(N % 4 == 0);
    Quad quad[N / 4];
};

template <class Quad, std::size_t N, class Operation>
[[gnu::always_inline]] inline ValuesIn<Quad, N> each_quad(const ValuesIn<Quad, N>& a,
                                                          const ValuesIn<Quad, N>& b,
                                                          const Operation& operation) {
    ValuesIn<Quad, N> out;
    for (std::size_t k = 0; k < N / 4; ++k) out.quad[k] = operation(a.quad[k], b.quad[k]);
    return out;
}

template <class Quad, std::size_t N>
ValuesIn<Quad, N> operator+(const ValuesIn<Quad, N>& a, const ValuesIn<Quad, N>& b) {
    return each_quad(a, b, [](Quad x, Quad y) { return x + y; });
}
template <class Quad, std::size_t N>
ValuesIn<Quad, N> operator-(const ValuesIn<Quad, N>& a, const ValuesIn<Quad, N>& b) {
    return each_quad(a, b, [](Quad x, Quad y) { return x - y; });
}
template <class Quad, std::size_t N>
ValuesIn<Quad, N> times_32(const ValuesIn<Quad, N>& a) {
    return each_quad(a, a, [](Quad x, Quad) { return times_32(x); });
}
template <class Quad, std::size_t N>
ValuesIn<Quad, N> plus_32(const ValuesIn<Quad, N>& a) {
    return each_quad(a, a, [](Quad x, Quad) { return plus_32(x); });
}
template <class Quad, std::size_t N>
ValuesIn<Quad, N> over_32(const ValuesIn<Quad, N>& a) {
    return each_quad(a, a, [](Quad x, Quad) { return over_32(x); });
}
template <class Quad, std::size_t N>
ValuesIn<Quad, N> quotient_or_zero(const ValuesIn<Quad, N>& a, const ValuesIn<Quad, N>& b) {
    return each_quad(a, b, [](Quad x, Quad y) { return quotient_or_zero(x, y); });
}

}  // namespace imgtune

#endif
