#include <fmt/format.h>

#include "workbench/files/picture_decoders.h"
#include "workbench/files/picture_file.h"

#ifdef IMGTUNE_HAS_PNG

#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>
#include <vector>

namespace imgtune::workbench {

namespace {

constexpr png_uint_32 kLongestPngSide = 65535;
constexpr png_alloc_size_t kMostPngChunk = 1U << 24U;  // bytes; profiles and texts are not read

/// What libpng reads from, and what it said before it gave up.
struct PngBytes {
    const std::string* bytes;
    std::size_t at;
    std::array<char, 160> said;
};

void read_bytes(png_structp png, png_bytep into, std::size_t count) {
    auto& source = *static_cast<PngBytes*>(png_get_io_ptr(png));
    if (count > source.bytes->size() - source.at) png_error(png, "it ends too early");
    std::memcpy(into, source.bytes->data() + source.at, count);
    source.at += count;
}

void keep_message(png_structp png, png_const_charp message) {
    auto& said = static_cast<PngBytes*>(png_get_error_ptr(png))->said;
    const std::size_t count = std::min(std::strlen(message), said.size() - 1);
    std::memcpy(said.data(), message, count);
    said[count] = '\0';
    png_longjmp(png, 1);
}

void ignore_warning(png_structp, png_const_charp) {}

/// Everything that is alive while libpng may jump out of it; nothing of it is made in between.
struct PngReader {
    png_structp png = nullptr;
    png_infop info = nullptr;
    PngBytes source{};
    Picture picture;
    std::vector<png_bytep> rows;
    std::size_t bits = 0;
    std::size_t channels = 0;

    explicit PngReader(const std::string& bytes) : source{&bytes, 0, {}} {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &source, keep_message, ignore_warning);
        if (png != nullptr) info = png_create_info_struct(png);
    }
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    bool read_head() {
        if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT: libpng's way out
        png_set_user_limits(png, kLongestPngSide, kLongestPngSide);
        png_set_chunk_malloc_max(png, kMostPngChunk);
        png_set_read_fn(png, &source, read_bytes);
        png_read_info(png, info);
        picture.width = png_get_image_width(png, info);
        picture.height = png_get_image_height(png, info);
        bits = png_get_bit_depth(png, info);
        channels = png_get_channels(png, info);
        if (channels == 2 || channels == 4) png_set_strip_alpha(png);
        png_set_swap(png);  // its samples have the high byte first
        png_set_interlace_handling(png);
        png_read_update_info(png, info);
        return true;
    }

    bool read_rows() {
        if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT: libpng's way out
        png_read_image(png, rows.data());
        png_read_end(png, nullptr);
        return true;
    }
};

[[noreturn]] void refuse_png(const std::string& name, const PngBytes& source) {
    refuse_picture(name, fmt::format("damaged or cut off ({})", source.said.data()),
                   "export it again");
}

}  // namespace

Picture decode_png(const std::string& bytes, const std::string& name) {
    PngReader reader(bytes);
    if (reader.info == nullptr) refuse_picture(name, "no memory to read it", "free some");
    if (!reader.read_head()) refuse_png(name, reader.source);
    if (reader.bits != 16) {
        refuse_picture(name, fmt::format("{} bits a sample", reader.bits),
                       "export it linear, with 16 bits");
    }
    Picture& picture = reader.picture;
    picture.channels = reader.channels >= 3 ? 3 : 1;
    require_picture_size(name, picture.width, picture.height, picture.channels);
    picture.lit_width = picture.width;
    picture.lit_height = picture.height;
    picture.samples.resize(picture.width * picture.height * picture.channels);
    reader.rows.resize(picture.height);
    for (std::size_t y = 0; y < picture.height; ++y) {
        reader.rows[y] =
            reinterpret_cast<png_bytep>(&picture.samples[y * picture.width * picture.channels]);
    }
    if (!reader.read_rows()) refuse_png(name, reader.source);
    return std::move(picture);
}

}  // namespace imgtune::workbench

#else

namespace imgtune::workbench {

Picture decode_png(const std::string&, const std::string& name) {
    refuse_picture(name, "this build reads no PNG",
                   "build it with libpng (Debian: libpng-dev), or give another form");
}

}  // namespace imgtune::workbench

#endif
