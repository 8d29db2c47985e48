#ifndef IMGTUNE_FUZZ_INPUT_H
#define IMGTUNE_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace imgtune::fuzz {

/// Ends the run with a report when something that always holds does not.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

template <class Record>
bool same(const Record& a, const Record& b) {
    return std::memcmp(&a, &b, sizeof(Record)) == 0;
}

/// Draws arguments from the fuzzer's bytes, which read as zeros after their end.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    std::uint32_t byte() { return at_ < size_ ? data_[at_++] : 0; }
    std::uint32_t half() { return byte() | byte() << 8; }
    std::uint32_t word() { return half() | half() << 16; }

    /// A value as likely small, at an end of a range, near a camera's values or anything.
    std::uint32_t value() {
        static const std::uint32_t kEnds[] = {0x7fffffffU, 0x80000000U, 0xffffffffU, 0x0000ffffU,
                                              0x3fffffffU, 0xc0000000U, 512U,        1000000U};
        const std::uint32_t style = byte();
        switch (style & 3U) {
            case 0:
                return style >> 2;
            case 1:
                return kEnds[style >> 2 & 7U] + (style >> 5) - 3U;
            case 2:
                return half();
            default:
                return word();
        }
    }
    int number() { return static_cast<int>(value()); }

    /// Any bits as a float, or a small one.
    float real() {
        if (byte() % 2 == 0) return static_cast<float>(static_cast<int>(half()) - 32768) / 256.0f;
        const std::uint32_t bits = word();
        float v;
        std::memcpy(&v, &bits, sizeof(v));
        return v;
    }

    /// A record of 32-bit words: zeros, mixed bits from a seed, small words or the bytes that
    /// follow; then up to seven words of it replaced. A few bytes thus reach any large record.
    /// Unchecked by the sanitizers: it takes as long as the library's own work otherwise.
    template <class Record>
    __attribute__((no_sanitize("address", "undefined", "coverage"))) void fill(Record& record) {
        static_assert(sizeof(Record) % 4 == 0);
        constexpr std::size_t kWords = sizeof(Record) / 4;
        const std::uint32_t style = byte();
        std::uint32_t state = style >> 2;
        for (std::size_t i = 0; i < kWords; ++i) {
            state = state * 1664525U + 1013904223U;
            const std::uint32_t mixed = state ^ state >> 15;
            set(record, i, style % 4 == 0 ? 0 : style % 4 == 1 ? mixed : mixed >> 22);
            if (style % 4 == 3 && at_ < size_) set(record, i, word());
        }
        for (std::uint32_t patches = byte() % 8; patches > 0; --patches) {
            const std::size_t i = half() % kWords;
            set(record, i, value());
        }
    }

    /// The same in a block of its own, so that a read past its end is seen.
    template <class Record>
    std::unique_ptr<Record> record() {
        auto drawn = std::make_unique<Record>();
        fill(*drawn);
        return drawn;
    }

    /// Several records or numbers side by side, in a block of their own.
    template <class Record>
    std::unique_ptr<Record[]> records(std::size_t count) {
        auto drawn = std::make_unique<Record[]>(count);
        for (std::size_t i = 0; i < count; ++i) fill(drawn[i]);
        return drawn;
    }
    std::unique_ptr<float[]> reals(std::size_t count) {
        auto drawn = std::make_unique<float[]>(count);
        for (std::size_t i = 0; i < count; ++i) drawn[i] = real();
        return drawn;
    }

  private:
    template <class Record>
    __attribute__((no_sanitize("address", "undefined", "coverage"), always_inline)) static void set(
        Record& record, std::size_t index, std::uint32_t value) {
        std::memcpy(reinterpret_cast<unsigned char*>(&record) + 4 * index, &value, 4);
    }

    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

/// The values of the debug switches that the library reads: two bits each, chosen by the name; 0 is
/// all off.
void set_switches(std::uint32_t bits);

}  // namespace imgtune::fuzz

#endif
