#ifndef IMGTUNE_WORKBENCH_FILES_ROW_WRITER_H
#define IMGTUNE_WORKBENCH_FILES_ROW_WRITER_H

#include <imgtune/imgtune.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/files/background_writer.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// The colour fields of a register image as CSV text, each after a comma.
///
/// Made for millions of rows: the text of fields whose word did not change since the last call is
/// copied.
class ColorText {
  public:
    ColorText();

    std::size_t room() const;  ///< most bytes that put() touches
    char* put(char* at, const NSIspTuning::ISP_NVRAM_COLOR_T& image);

  private:
    struct Field {
        std::uint32_t lsb;
        std::uint32_t mask;
    };
    /// Fields that stand next to each other in the row and in one word, and their text.
    struct Group {
        std::uint32_t word;
        std::uint32_t value;  ///< of the word when the text was made
        std::uint16_t first;  ///< in fields_
        std::uint16_t count;
        std::uint32_t length;
        char text[112];
    };

    void make_text(Group& group) const;

    std::vector<Field> fields_;
    std::vector<Group> groups_;
    NSIspTuning::ISP_NVRAM_COLOR_T last_{};
    std::vector<char> last_text_;  ///< of all fields of last_
    std::size_t last_length_ = 0;
};

/// Writes frames and what the library made of them as CSV, one row a frame: frame number, inputs,
/// coefficients c0..c8, the words ccm0..ccm5 in hex, then the fields of the colour image by name.
class RowWriter {
  public:
    RowWriter(OutputFile& output, const CallerSettings& caller, Jobs jobs);

    /// `more` names further columns, each after a comma.
    void write_header(std::string_view more = {});
    /// `more` holds their values; at most kMostMore bytes.
    void write(std::uint64_t number, const Frame& frame, const Registers& registers,
               std::string_view more = {});
    static constexpr std::size_t kMostMore = 256;
    /// After the last row: hands everything to the file.
    void finish();

  private:
    BackgroundWriter output_;
    CallerSettings caller_;
    Jobs jobs_;
    ColorText color_;
    std::size_t room_;  ///< most bytes of a row
    BackgroundWriter::Block block_;
};

}  // namespace imgtune::workbench

#endif
