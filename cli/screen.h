#ifndef IMGTUNE_CLI_SCREEN_H
#define IMGTUNE_CLI_SCREEN_H

#include <string>
#include <string_view>
#include <vector>

namespace imgtune::cli {

/// The whole terminal, drawn again and again without flicker; what it showed before comes back at
/// the end. Control sequences are those that every terminal of today shares.
class Screen {
  public:
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Whether standard output is a terminal that takes control sequences.
    static bool is_there();

    /// Lines that do not fit are cut at the right and at the bottom.
    void show(const std::vector<std::string>& lines);

    std::string bold(std::string_view text) const { return styled("1", text); }
    std::string quiet(std::string_view text) const { return styled("2", text); }
    std::string good(std::string_view text) const { return styled("32", text); }
    std::string bad(std::string_view text) const { return styled("1;31", text); }

  private:
    std::string styled(const char* style, std::string_view text) const;

    bool colors_;
    bool begun_ = false;
};

}  // namespace imgtune::cli

#endif
