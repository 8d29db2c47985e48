#ifndef IMGTUNE_WORKBENCH_FILES_ROW_WRITER_H
#define IMGTUNE_WORKBENCH_FILES_ROW_WRITER_H

#include <string_view>

#include "workbench/camera/row_text.h"
#include "workbench/files/background_writer.h"

namespace imgtune::workbench {

/// Writes rows of registers to a file, in a thread of its own.
class RowWriter {
  public:
    RowWriter(OutputFile& output, const RowColumns& columns);

    /// `more` names further columns, each after a comma.
    void write_header(std::string_view more = {});
    /// `more` holds their values; at most kMostMore bytes.
    void write(std::uint64_t number, const FrameValues& values, const Registers& registers,
               std::string_view more = {});
    static constexpr std::size_t kMostMore = 256;
    /// After the last row: hands everything to the file.
    void finish();

  private:
    BackgroundWriter output_;
    RowText text_;
    BackgroundWriter::Block block_;
};

}  // namespace imgtune::workbench

#endif
