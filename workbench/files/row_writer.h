#ifndef IMGTUNE_WORKBENCH_FILES_ROW_WRITER_H
#define IMGTUNE_WORKBENCH_FILES_ROW_WRITER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/camera/row_text.h"
#include "workbench/files/background.h"
#include "workbench/files/output_file.h"

namespace imgtune::workbench {

/// Where rows become text and are written.
enum class RowThread {
    own,      ///< in a thread of its own, beside the run
    callers,  ///< in the caller's, as where other runs keep the cores busy
};

/// Writes rows of registers to a file.
class RowWriter {
  public:
    RowWriter(OutputFile& output, const RowColumns& columns, RowThread thread = RowThread::own);

    /// `more` names further columns, each after a comma.
    void write_header(std::string_view more = {});
    /// `more` holds their values.
    void write(std::uint64_t number, const FrameValues& values, const Registers& registers,
               std::string_view more = {});
    /// Hands all rows so far to whoever reads the output. Throws what writing threw.
    void flush();
    /// After the last row: hands everything to the file. Throws what writing threw.
    void finish();

  private:
    struct Row {
        std::uint64_t number = 0;
        FrameValues values{};
        Registers registers;
        std::string more;
    };
    struct Batch {
        std::vector<Row> rows;
        std::size_t used = 0;
    };

    void put(std::uint64_t number, const FrameValues& values, const Registers& registers,
             std::string_view more);

    OutputFile& output_;
    RowText text_;
    std::vector<char> block_;
    std::size_t used_ = 0;  ///< bytes of the block
    Batch batch_;
    std::optional<Background<Batch>> background_;  ///< last: it ends before what it works on
};

}  // namespace imgtune::workbench

#endif
