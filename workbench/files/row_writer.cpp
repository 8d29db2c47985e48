#include "workbench/files/row_writer.h"

#include <cstring>
#include <string>
#include <string_view>

#include "workbench/text/digits.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kBlockSize = 1 << 18;
constexpr std::size_t kMostInGroup = 8;

/// Frame number, inputs, coefficients and words of the matrix, line end.
constexpr std::size_t kFixedRoom = (1 + kFrameColumns.size() + 9 + 6 + 1) * kNumberRoom;

char* put_numbers(char* at, std::initializer_list<std::int64_t> values) {
    for (const std::int64_t value : values) {
        *at++ = ',';
        at = put_number(at, value);
    }
    return at;
}

char* put_inputs(char* at, const Frame& frame) {
    const AWB_GAIN_T& full = frame.state.rAWBFullGain;
    const AWB_GAIN_T& awb = frame.state.rAWBGain;
    return put_numbers(at, {frame.state.u4RealLV, frame.state.u4CCT, full.i4R, full.i4G, full.i4B,
                            awb.i4R, awb.i4G, awb.i4B, frame.state.u4FlashMode,
                            frame.state.u4SceneFlag, frame.state.profile, frame.capture});
}

char* put_matrix(char* at, const NSIspTuning::ISP_NVRAM_CCM_T& image,
                 const CallerSettings& caller) {
    for (const std::int32_t value : decode(image, caller)) {
        *at++ = ',';
        at = put_number(at, value);
    }
    for (const std::uint32_t word : image.u4Word) {
        *at++ = ',';
        at = put_hex(at, word);
    }
    return at;
}

/// Copies `length` bytes; may write up to the next multiple of 16.
char* copy_text(char* at, const char* text, std::size_t length) {
    for (std::size_t done = 0; done < length; done += 16) std::memcpy(at + done, text + done, 16);
    return at + length;
}

}  // namespace

ColorText::ColorText() {
    for (const ColorField& field : color_fields()) {
        if (groups_.empty() || groups_.back().word != field.word ||
            groups_.back().count == kMostInGroup) {
            groups_.push_back({});
            groups_.back().word = field.word;
            groups_.back().first = static_cast<std::uint16_t>(fields_.size());
        }
        ++groups_.back().count;
        fields_.push_back({field.lsb, BitField{field.word, field.lsb, field.width}.value_mask()});
    }
    last_text_.resize(room());
    for (Group& group : groups_) {
        make_text(group);
        std::memcpy(last_text_.data() + last_length_, group.text, group.length);
        last_length_ += group.length;
    }
}

std::size_t ColorText::room() const {
    return groups_.size() * sizeof(Group::text);
}

void ColorText::make_text(Group& group) const {
    char* at = group.text;
    for (std::size_t i = group.first; i < std::size_t{group.first} + group.count; ++i) {
        const std::uint32_t value = (group.value >> fields_[i].lsb) & fields_[i].mask;
        *at++ = ',';
        at = put_number(at, value);
    }
    group.length = static_cast<std::uint32_t>(at - group.text);
}

char* ColorText::put(char* at, const NSIspTuning::ISP_NVRAM_COLOR_T& image) {
    if (std::memcmp(&image, &last_, sizeof(image)) != 0) {
        char* const begin = last_text_.data();
        char* end = begin;
        for (Group& group : groups_) {
            const std::uint32_t value = image.u4Word[group.word];
            if (value != group.value) {
                group.value = value;
                make_text(group);
            }
            end = copy_text(end, group.text, group.length);
        }
        last_length_ = static_cast<std::size_t>(end - begin);
        last_ = image;
    }
    std::memcpy(at, last_text_.data(), last_length_);
    return at + last_length_;
}

RowWriter::RowWriter(OutputFile& output, const CallerSettings& caller, Jobs jobs)
    : output_(output),
      caller_(caller),
      jobs_(jobs),
      room_(kFixedRoom + color_.room() + kMostMore),
      block_{std::vector<char>(kBlockSize + room_), 0} {}

void RowWriter::write_header(std::string_view more) {
    std::string header = "frame";
    for (const FrameColumn& column : kFrameColumns) (header += ',') += column.name;
    if (jobs_.ccm) {
        for (int k = 0; k < 9; ++k) header += ",c" + std::to_string(k);
        for (int k = 0; k < 6; ++k) header += ",ccm" + std::to_string(k);
    }
    if (jobs_.color) {
        for (const ColorField& field : color_fields()) (header += ',') += field.name;
    }
    header += more;
    header += '\n';
    BackgroundWriter::Block text{{header.begin(), header.end()}, header.size()};
    output_.write(text);
}

void RowWriter::write(std::uint64_t number, const Frame& frame, const Registers& registers,
                      std::string_view more) {
    if (block_.used > kBlockSize) output_.write(block_);
    char* at = block_.bytes.data() + block_.used;
    at = put_number(at, static_cast<std::int64_t>(number));
    at = put_inputs(at, frame);
    if (jobs_.ccm) at = put_matrix(at, registers.ccm, caller_);
    if (jobs_.color) at = color_.put(at, registers.color);
    if (!more.empty()) std::memcpy(at, more.data(), more.size());
    at += more.size();
    *at++ = '\n';
    block_.used = static_cast<std::size_t>(at - block_.bytes.data());
}

void RowWriter::finish() {
    output_.write(block_);
    output_.finish();
}

}  // namespace imgtune::workbench
