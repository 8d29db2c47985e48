#ifndef IMGTUNE_WORKBENCH_TEXT_BAD_INPUT_H
#define IMGTUNE_WORKBENCH_TEXT_BAD_INPUT_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace imgtune::workbench {

/// Where what cannot be used stands, as far as that is known.
struct InputPlace {
    std::string file{};
    std::uint64_t line = 0;  ///< from 1; 0: none
    std::string field{};     ///< or column
};

/// What the user gave cannot be used, or the output cannot be written: exit status 2. The text is
/// complete as it stands (file, line or field, value, what is allowed); the place is for programs.
class BadInput : public std::runtime_error {
  public:
    explicit BadInput(const std::string& text, InputPlace place = {})
        : std::runtime_error(text), place_(std::move(place)) {}

    const InputPlace& place() const { return place_; }

  private:
    InputPlace place_;
};

}  // namespace imgtune::workbench

#endif
