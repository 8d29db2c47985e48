#ifndef IMGTUNE_WORKBENCH_CAMERA_ROW_TEXT_H
#define IMGTUNE_WORKBENCH_CAMERA_ROW_TEXT_H

#include <imgtune/imgtune.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// Which columns a row has, and under which codec its coefficients are read.
struct RowColumns {
    CallerSettings caller;
    Jobs jobs;
    std::vector<std::string> patterns = {};  ///< globs of names; none: every column
};

/// The columns that there are to choose from, in the order of a row: inputs, coefficients c0..c8,
/// words ccm0..ccm5, then the colour fields by name.
std::vector<std::string> row_column_names(Jobs jobs);

/// The jobs whose registers the chosen columns show. Throws BadInput for a pattern that fits no
/// column.
Jobs jobs_shown(const RowColumns& columns);

/// The chosen fields of colour images as CSV text, each after a comma.
///
/// Made for millions of rows: the text of fields whose word did not change since the last call is
/// copied.
class ColorText {
  public:
    explicit ColorText(const std::vector<bool>& chosen);  ///< by index into color_fields()

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
    std::size_t first_word_ = 0;  ///< of an image that a group reads
    std::size_t word_bytes_ = 0;  ///< up to the last such word
    NSIspTuning::ISP_NVRAM_COLOR_T last_{};
    std::vector<char> last_text_;  ///< of all fields of last_
    std::size_t last_length_ = 0;
};

/// Frames and what the library made of them as CSV, one row a frame; the first column is the
/// frame's number.
class RowText {
  public:
    /// Throws BadInput for a pattern that fits no column.
    explicit RowText(const RowColumns& columns);

    /// `more` names further columns, each after a comma.
    std::string header(std::string_view more = {}) const;

    std::size_t room() const { return room_; }  ///< most bytes that put() touches
    char* put(char* at, std::uint64_t number, const FrameValues& values,
              const Registers& registers);

  private:
    std::vector<std::string> names_;   ///< of the chosen columns
    std::vector<std::size_t> inputs_;  ///< indices into kFrameColumns
    std::vector<std::size_t> matrix_;  ///< coefficients
    std::vector<std::size_t> words_;   ///< of the CCM image
    CallerSettings caller_;
    ColorText color_;
    bool any_color_ = false;
    std::size_t room_ = 0;
};

}  // namespace imgtune::workbench

#endif
