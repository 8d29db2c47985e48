#include <fmt/format.h>

#include "workbench/files/picture_decoders.h"
#include "workbench/files/picture_file.h"

#ifdef IMGTUNE_HAS_LIBRAW

#include <libraw/libraw.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <numeric>
#include <thread>

namespace imgtune::workbench {

namespace {

// What LibRaw gives for a 16-bit file that says nothing: no level that samples would clip at.
constexpr unsigned kNoWhiteLevel = 65535;
constexpr unsigned kMostRawMegabytes = 1024;
constexpr std::size_t kLargestPattern = 4096;  // levels of black

/// Tells LibRaw to give up when time is up.
class TimeLimit {
  public:
    explicit TimeLimit(LibRaw& raw)
        : watch_([this, &raw] {
              std::unique_lock lock(mutex_);
              if (!ended_.wait_for(lock, std::chrono::seconds(kMostReadingSeconds),
                                   [this] { return is_over_; })) {
                  raw.setCancelFlag();
              }
          }) {}
    ~TimeLimit() {
        {
            const std::lock_guard lock(mutex_);
            is_over_ = true;
        }
        ended_.notify_one();
        watch_.join();
    }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

  private:
    std::mutex mutex_;
    std::condition_variable ended_;
    bool is_over_ = false;
    std::thread watch_;
};

[[noreturn]] void refuse_raw(const std::string& name, int error) {
    constexpr const char* kCopyAgain = "copy the file again from the camera";
    switch (error) {
        case LIBRAW_FILE_UNSUPPORTED:
        case LIBRAW_NOT_IMPLEMENTED:
            refuse_picture(name, "not a raw file that LibRaw reads, or cut off",
                           "give DNG or another raw file, a 16-bit TIFF or PNG (.tif, .png), or "
                           "CSV of the 24 patch means");
        case LIBRAW_CANCELLED_BY_CALLBACK:
            refuse_picture(name, fmt::format("not read within {} s", kMostReadingSeconds),
                           kCopyAgain);
        case LIBRAW_TOO_BIG:
        case LIBRAW_UNSUFFICIENT_MEMORY:
        case LIBRAW_MEMPOOL_OVERFLOW:
            refuse_picture(name, "the file wants more memory than a photograph needs", kCopyAgain);
        default:
            refuse_picture(name, fmt::format("damaged or cut off ({})", LibRaw::strerror(error)),
                           kCopyAgain);
    }
}

void check(const std::string& name, int error) {
    if (error != LIBRAW_SUCCESS) refuse_raw(name, error);
}

/// Red, green or blue for LibRaw's number of a colour.
std::uint8_t color_of(const std::string& name, const char* letters, int number) {
    switch (letters[number & 3]) {
        case 'R':
            return 0;
        case 'G':
            return 1;
        case 'B':
            return 2;
        default:
            refuse_picture(name, "a mosaic of other colours than red, green and blue",
                           "use a camera with a Bayer mosaic, or a linear TIFF");
    }
}

/// black, cblack[0..3] by colour, and the pattern after them, as levels from the first pixel on.
/// All but the first count from the corner of what is lit.
LevelPattern black_of(LibRaw& raw, bool is_mosaic) {
    const libraw_colordata_t& color = raw.imgdata.color;
    const libraw_image_sizes_t& sizes = raw.imgdata.sizes;
    std::size_t rows = color.cblack[4];
    std::size_t columns = color.cblack[5];
    const bool has_pattern = rows > 0 && columns > 0 && rows <= kLargestPattern / columns &&
                             6 + rows * columns <= LIBRAW_CBLACK_SIZE;
    if (!has_pattern) rows = columns = 1;
    LevelPattern black;
    black.rows = std::lcm(rows, std::size_t{2});
    black.columns = std::lcm(columns, std::size_t{2});
    black.levels.assign(black.rows * black.columns, 0.0);
    for (std::size_t y = 0; y < black.rows; ++y) {
        for (std::size_t x = 0; x < black.columns; ++x) {
            // From the first pixel of the file to the place counted from what is lit.
            const std::size_t row = (y + black.rows - sizes.top_margin % black.rows) % black.rows;
            const std::size_t column =
                (x + black.columns - sizes.left_margin % black.columns) % black.columns;
            double level = color.black;
            if (is_mosaic) {
                level +=
                    color.cblack[raw.COLOR(static_cast<int>(row), static_cast<int>(column)) & 3];
            }
            if (has_pattern) {
                level += color.cblack[6 + row % rows * columns + column % columns];
            }
            black.levels[y * black.columns + x] = level;
        }
    }
    return black;
}

void take_mosaic(LibRaw& raw, const std::string& name, Picture& picture) {
    const libraw_image_sizes_t& sizes = raw.imgdata.sizes;
    const libraw_iparams_t& params = raw.imgdata.idata;
    if (params.filters < 1000 || params.colors != 3 || raw.imgdata.rawdata.raw_image == nullptr ||
        raw.is_fuji_rotated() != 0) {
        refuse_picture(name,
                       params.colors == 1 ? "a picture without colours"
                                          : "a mosaic that is not one of 2 x 2 cells (Bayer)",
                       "use a camera with a Bayer mosaic, or a linear TIFF");
    }
    // LibRaw counts the mosaic from the corner of what is lit.
    for (std::size_t i = 0; i < 4; ++i) {
        const int row = static_cast<int>(i / 2 + sizes.top_margin) & 1;
        const int column = static_cast<int>(i % 2 + sizes.left_margin) & 1;
        picture.order[i] = color_of(name, params.cdesc, raw.COLOR(row, column));
    }
    auto order = picture.order;
    std::sort(order.begin(), order.end());
    if (order != std::array<std::uint8_t, 4>{0, 1, 1, 2}) {
        refuse_picture(name, "a mosaic whose cells are not one red, two greens and one blue",
                       "use a camera with a Bayer mosaic, or a linear TIFF");
    }
    picture.channels = 1;
    picture.samples.resize(picture.width * picture.height);
    const char* const from = reinterpret_cast<const char*>(raw.imgdata.rawdata.raw_image);
    const std::size_t pitch = sizes.raw_pitch == 0 ? picture.width * 2 : sizes.raw_pitch;
    for (std::size_t y = 0; y < picture.height; ++y) {
        std::memcpy(&picture.samples[y * picture.width], from + y * pitch, picture.width * 2);
    }
}

/// A linear DNG: three samples a pixel.
void take_colors(LibRaw& raw, const std::string& name, Picture& picture) {
    const auto& data = raw.imgdata.rawdata;
    if (raw.imgdata.idata.colors != 3 ||
        (data.color3_image == nullptr && data.color4_image == nullptr)) {
        refuse_picture(name,
                       raw.imgdata.idata.colors == 1
                           ? "a picture without colours"
                           : "samples that are not 16-bit numbers of red, green and blue",
                       "give another raw file, or a 16-bit linear TIFF");
    }
    picture.channels = 3;
    picture.samples.resize(picture.width * picture.height * 3);
    const std::size_t own = data.color3_image != nullptr ? 3 : 4;
    const auto* const from =
        data.color3_image != nullptr ? &data.color3_image[0][0] : &data.color4_image[0][0];
    const std::size_t pitch =
        raw.imgdata.sizes.raw_pitch == 0 ? picture.width * own : raw.imgdata.sizes.raw_pitch / 2;
    for (std::size_t y = 0; y < picture.height; ++y) {
        for (std::size_t x = 0; x < picture.width; ++x) {
            std::copy_n(from + y * pitch + x * own, 3,
                        &picture.samples[(y * picture.width + x) * 3]);
        }
    }
}

}  // namespace

Picture decode_raw(const std::string& bytes, const std::string& name) {
    // Half a megabyte: not for the stack.
    const auto raw = std::make_unique<LibRaw>();
    raw->set_dataerror_handler(nullptr, nullptr);  // which would print
    raw->imgdata.params.max_raw_memory_mb = kMostRawMegabytes;
    raw->imgdata.params.use_rawspeed = 0;
    const TimeLimit limit(*raw);
    // It reads the buffer alone, whatever its type says.
    const int opened = raw->open_buffer(const_cast<char*>(bytes.data()), bytes.size());
    // What begins as no raw file does is none, whatever was missing in it.
    check(name, opened == LIBRAW_IO_ERROR ? LIBRAW_FILE_UNSUPPORTED : opened);
    const libraw_image_sizes_t& sizes = raw->imgdata.sizes;
    require_picture_size(name, sizes.raw_width, sizes.raw_height, 1);
    check(name, raw->unpack());
    if (raw->error_count() > 0) refuse_raw(name, LIBRAW_DATA_ERROR);

    Picture picture;
    picture.width = sizes.raw_width;
    picture.height = sizes.raw_height;
    picture.left = sizes.left_margin;
    picture.top = sizes.top_margin;
    picture.lit_width = sizes.width;
    picture.lit_height = sizes.height;
    if (picture.lit_width == 0 || picture.lit_height == 0 ||
        picture.left + picture.lit_width > picture.width ||
        picture.top + picture.lit_height > picture.height) {
        refuse_raw(name, LIBRAW_DATA_ERROR);
    }
    if (raw->have_fpdata() != 0 || raw->imgdata.rawdata.raw_alloc == nullptr) {
        refuse_picture(name, "samples in floating point, or none at all",
                       "convert the file to a DNG with whole numbers");
    }
    const bool is_mosaic = raw->imgdata.rawdata.raw_image != nullptr;
    if (is_mosaic) {
        take_mosaic(*raw, name, picture);
    } else {
        require_picture_size(name, picture.width, picture.height, 3);
        take_colors(*raw, name, picture);
    }
    picture.black = black_of(*raw, is_mosaic);
    const unsigned white = raw->imgdata.color.maximum;
    if (white > 0 && white < kNoWhiteLevel) picture.white = white;
    return picture;
}

}  // namespace imgtune::workbench

#else

namespace imgtune::workbench {

Picture decode_raw(const std::string&, const std::string& name) {
    refuse_picture(name, "this build reads no raw files",
                   "build it with LibRaw (Debian: libraw-dev), or give CSV of the 24 patch means");
}

}  // namespace imgtune::workbench

#endif
