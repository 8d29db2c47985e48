#ifndef IMGTUNE_COMMON_RELAXED_WORD_H
#define IMGTUNE_COMMON_RELAXED_WORD_H

#include <cstdint>

namespace imgtune {

/// A word that threads share; its reads and writes order nothing else. (What includes <atomic>
/// takes half as long again to compile.)
class RelaxedWord {
  public:
    constexpr explicit RelaxedWord(std::uint32_t value) : value_(value) {}
    RelaxedWord(const RelaxedWord&) = delete;
    RelaxedWord& operator=(const RelaxedWord&) = delete;

    [[nodiscard]] std::uint32_t load() const { return __atomic_load_n(&value_, __ATOMIC_RELAXED); }
    void store(std::uint32_t value) { __atomic_store_n(&value_, value, __ATOMIC_RELAXED); }

  private:
    std::uint32_t value_;
};

}  // namespace imgtune

#endif
