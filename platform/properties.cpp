#include <cutils/properties.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string_view>

namespace {

constexpr std::size_t kValueSize = PROPERTY_VALUE_MAX;
constexpr std::size_t kMaxNameLength = 127;
constexpr std::size_t kSlots = 512;     // a power of two
constexpr std::size_t kMaxNames = 384;  // leaves free slots that end every search

/// A value that one thread at a time writes and any number read without a lock: a read that a write
/// has crossed is repeated. The words are released and acquired one by one, so that a reader that
/// sees any word of a write also sees the count that announced it.
class SharedText {
  public:
    void write(std::string_view text) {
        std::array<std::uint64_t, kWords> words{};
        std::memcpy(words.data(), text.data(), text.size());
        const std::uint32_t count = writes_.load(std::memory_order_relaxed);
        writes_.store(count + 1, std::memory_order_relaxed);
        for (std::size_t i = 0; i < kWords; ++i) {
            words_[i].store(words[i], std::memory_order_release);
        }
        writes_.store(count + 2, std::memory_order_release);
    }

    /// Copies the text with its terminator; returns its length.
    std::size_t read(char* out) const {
        std::array<std::uint64_t, kWords> words;
        std::uint32_t before = 0;
        do {
            before = writes_.load(std::memory_order_acquire);
            for (std::size_t i = 0; i < kWords; ++i) {
                words[i] = words_[i].load(std::memory_order_acquire);
            }
        } while (before % 2 != 0 || writes_.load(std::memory_order_relaxed) != before);
        char text[sizeof(words)];
        std::memcpy(text, words.data(), sizeof(words));
        const std::size_t length = std::strlen(text);
        std::memcpy(out, text, length + 1);
        return length;
    }

  private:
    static constexpr std::size_t kWords = (kValueSize + 7) / 8;
    std::atomic<std::uint32_t> writes_{0};  // odd while a write is under way
    std::array<std::atomic<std::uint64_t>, kWords> words_{};
};

/// Entries are only ever added: name and hash are constant once `used` is seen.
struct Entry {
    std::atomic<bool> used{false};
    std::uint64_t hash = 0;
    std::size_t name_length = 0;
    char name[kMaxNameLength];
    SharedText value;

    bool is(std::string_view other, std::uint64_t other_hash) const {
        return hash == other_hash && std::string_view(name, name_length) == other;
    }
};

/// Eight characters a step, which keeps the read of an unset name within a few nanoseconds.
std::uint64_t hash_of(std::string_view text) {
    constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15;  // 2^64 / golden ratio
    std::uint64_t hash = text.size();
    const char* at = text.data();
    std::size_t left = text.size();
    for (; left >= 8; at += 8, left -= 8) {
        std::uint64_t word;
        std::memcpy(&word, at, 8);
        hash = (hash ^ word) * kMultiplier;
        hash ^= hash >> 32;
    }
    std::uint64_t word = 0;
    std::memcpy(&word, at, left);
    hash = (hash ^ word) * kMultiplier;
    return hash ^ (hash >> 32);
}

bool is_name(std::string_view text) {
    if (text.empty() || text.size() > kMaxNameLength) return false;
    constexpr std::string_view kAllowed =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-_@:";
    return text.find_first_not_of(kAllowed) == std::string_view::npos;
}

enum class SetResult { kDone, kNotAName, kValueTooLong, kFull };

/// False while it is known that no property was ever set, which spares a look at the name.
constinit std::atomic<bool> g_any_set{true};

class Store {
  public:
    Store() {
        if (const char* path = std::getenv("IMGTUNE_PROPERTIES"); path != nullptr && *path != 0) {
            preset_from(path);
        }
        if (names_ == 0) g_any_set.store(false, std::memory_order_release);
    }

    std::size_t get(std::string_view name, char* value) const {
        if (name.size() <= kMaxNameLength) {
            const std::uint64_t hash = hash_of(name);
            for (std::size_t slot = hash % kSlots;; slot = (slot + 1) % kSlots) {
                const Entry& entry = entries_[slot];
                if (!entry.used.load(std::memory_order_acquire)) break;
                if (entry.is(name, hash)) return entry.value.read(value);
            }
        }
        *value = '\0';
        return 0;
    }

    SetResult set(std::string_view name, std::string_view value) {
        if (!is_name(name)) return SetResult::kNotAName;
        if (value.size() >= kValueSize) return SetResult::kValueTooLong;
        const std::uint64_t hash = hash_of(name);
        const std::lock_guard<std::mutex> lock(writer_);
        std::size_t slot = hash % kSlots;
        while (entries_[slot].used.load(std::memory_order_relaxed)) {
            if (entries_[slot].is(name, hash)) {
                entries_[slot].value.write(value);
                return SetResult::kDone;
            }
            slot = (slot + 1) % kSlots;
        }
        if (names_ == kMaxNames) return SetResult::kFull;
        Entry& entry = entries_[slot];
        entry.hash = hash;
        entry.name_length = name.size();
        std::memcpy(entry.name, name.data(), name.size());
        entry.value.write(value);
        entry.used.store(true, std::memory_order_release);
        ++names_;
        g_any_set.store(true, std::memory_order_release);
        return SetResult::kDone;
    }

  private:
    void preset_from(const char* path);
    const char* preset_line(std::string_view line);

    std::mutex writer_;
    std::size_t names_ = 0;
    std::array<Entry, kSlots> entries_;
};

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return text.substr(0, 0);
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Returns what is wrong with the line, or null.
const char* Store::preset_line(std::string_view line) {
    if (line.empty() || line.front() == '#') return nullptr;
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return "no '=', expected name=value";
    const std::string_view value = trimmed(line.substr(equals + 1));
    if (value.find('\0') != std::string_view::npos) return "a zero byte in the value";
    switch (set(trimmed(line.substr(0, equals)), value)) {
        case SetResult::kNotAName:
            return "a name has 1 to 127 letters, digits and . - _ @ :";
        case SetResult::kValueTooLong:
            return "a value has at most 91 characters";
        case SetResult::kFull:
            return "no room, at most 384 properties";
        case SetResult::kDone:
            break;
    }
    return nullptr;
}

void Store::preset_from(const char* path) {
    std::FILE* file = std::fopen(path, "re");
    char* line = nullptr;
    std::size_t capacity = 0;
    errno = file == nullptr ? errno : 0;
    for (int number = 1; file != nullptr; ++number) {
        const ssize_t length = getline(&line, &capacity, file);
        if (length < 0) break;
        const std::string_view text = trimmed({line, static_cast<std::size_t>(length)});
        if (const char* fault = preset_line(text); fault != nullptr) {
            std::fprintf(stderr, "%s:%d: %s; skipped: %.*s\n", path, number, fault,
                         static_cast<int>(text.size()), text.data());
        }
    }
    if (file == nullptr || std::ferror(file) != 0) {
        std::fprintf(stderr, "%s: cannot be read (IMGTUNE_PROPERTIES): %s\n", path,
                     std::strerror(errno));
    }
    std::free(line);
    if (file != nullptr) std::fclose(file);
}

Store& store() {
    static Store instance;
    return instance;
}

/// A default is a character or two: shorter than the calls that would copy it.
int put_default(char* value, const char* default_value) {
    int length = 0;
    while (default_value != nullptr && length < PROPERTY_VALUE_MAX - 1 && *default_value != '\0') {
        value[length++] = *default_value++;
    }
    value[length] = '\0';
    return length;
}

/// Out of line, so that a read that needs no look saves no registers for one.
[[gnu::noinline]] int look_up(const char* key, char* value, const char* default_value) {
    const std::size_t length = key == nullptr ? 0 : store().get(key, value);
    return length > 0 ? static_cast<int>(length) : put_default(value, default_value);
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int property_get(const char* key, char* value, const char* default_value) {
    if (g_any_set.load(std::memory_order_acquire)) return look_up(key, value, default_value);
    return put_default(value, default_value);
}

EXPORTED int property_set(const char* key, const char* value) {
    const SetResult result = store().set(key == nullptr ? "" : key, value == nullptr ? "" : value);
    return result == SetResult::kDone ? 0 : -1;
}
