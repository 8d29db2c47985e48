#include <fmt/format.h>

#include "workbench/files/picture_decoders.h"
#include "workbench/files/picture_file.h"

#ifdef IMGTUNE_HAS_TIFF

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace imgtune::workbench {

namespace {

constexpr tmsize_t kMostTiffAllocation = tmsize_t{1} << 30;

/// A TIFF in memory, as libtiff reads it.
struct TiffBytes {
    const std::string& bytes;
    std::size_t at = 0;
    std::string said{};  ///< libtiff's first complaint

    static TiffBytes& of(thandle_t handle) { return *static_cast<TiffBytes*>(handle); }

    static tmsize_t read(thandle_t handle, void* into, tmsize_t wanted) {
        TiffBytes& self = of(handle);
        const std::size_t rest = self.bytes.size() - std::min(self.at, self.bytes.size());
        const std::size_t count =
            std::min(rest, static_cast<std::size_t>(std::max<tmsize_t>(wanted, 0)));
        if (count > 0) std::memcpy(into, self.bytes.data() + self.at, count);
        self.at += count;
        return static_cast<tmsize_t>(count);
    }
    static tmsize_t refuse_write(thandle_t, void*, tmsize_t) { return 0; }
    static toff_t seek(thandle_t handle, toff_t to, int from) {
        TiffBytes& self = of(handle);
        const toff_t base = from == SEEK_CUR ? self.at : from == SEEK_END ? self.bytes.size() : 0;
        self.at = base + to;
        return self.at;
    }
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t handle) { return of(handle).bytes.size(); }
    static int complain(TIFF*, void* self, const char*, const char* format, va_list arguments) {
        std::string& said = static_cast<TiffBytes*>(self)->said;
        if (said.empty()) {
            char text[200];
            std::vsnprintf(text, sizeof(text), format, arguments);
            said = text;
        }
        return 1;
    }
    static int ignore(TIFF*, void*, const char*, const char*, va_list) { return 1; }
};

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

Tiff open_tiff(TiffBytes& bytes) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMostTiffAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &TiffBytes::complain, &bytes);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &TiffBytes::ignore, nullptr);
    // "m": into memory of its own, never mapped.
    return Tiff(TIFFClientOpenExt("picture", "rm", &bytes, &TiffBytes::read,
                                  &TiffBytes::refuse_write, &TiffBytes::seek, &TiffBytes::close,
                                  &TiffBytes::size, nullptr, nullptr, options.get()),
                &TIFFClose);
}

template <typename Value>
Value tag_of(TIFF* tiff, std::uint32_t tag, Value otherwise) {
    Value value = otherwise;
    return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : otherwise;
}

[[noreturn]] void refuse_tiff(const std::string& name, const std::string& said) {
    refuse_picture(
        name, said.empty() ? "damaged or cut off" : fmt::format("damaged or cut off ({})", said),
        "export it again");
}

/// A part of the picture as libtiff hands it out, and where it goes.
struct TiffPart {
    std::size_t left, top, width, height;
    std::size_t row_samples;  ///< from one row of the part to the next
    std::size_t first;        ///< channel that its first sample is of
    std::size_t stride;       ///< samples a pixel
};

void place(const std::vector<std::uint16_t>& from, const TiffPart& part, Picture& picture) {
    const std::size_t bottom = std::min(part.top + part.height, picture.height);
    const std::size_t right = std::min(part.left + part.width, picture.width);
    const std::size_t take = part.stride == 1 ? 1 : picture.channels;
    for (std::size_t y = part.top; y < bottom; ++y) {
        for (std::size_t x = part.left; x < right; ++x) {
            const std::uint16_t* const pixel =
                &from[(y - part.top) * part.row_samples + (x - part.left) * part.stride];
            std::copy_n(pixel, take,
                        &picture.samples[(y * picture.width + x) * picture.channels + part.first]);
        }
    }
}

void read_parts(TIFF* tiff, const std::string& name, const TiffBytes& bytes, std::size_t planes,
                std::size_t stride, Picture& picture) {
    const bool tiled = TIFFIsTiled(tiff) != 0;
    const auto part_bytes = static_cast<std::size_t>(
        std::max<tmsize_t>(0, tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff)));
    const auto width = tiled ? tag_of<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0)
                             : static_cast<std::uint32_t>(picture.width);
    const auto height = tiled ? tag_of<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0)
                              : std::min(tag_of<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0),
                                         static_cast<std::uint32_t>(picture.height));
    require_picture_size(name, width, height, stride);
    const std::size_t part_samples = std::size_t{width} * height * stride;
    if (part_bytes < part_samples * 2 && part_bytes / 2 < std::size_t{width} * stride) {
        refuse_tiff(name, "");
    }
    std::vector<std::uint16_t> part(std::max(part_samples, part_bytes / 2 + 1));
    const auto room = static_cast<tmsize_t>(part.size() * 2);
    for (std::size_t plane = 0; plane < planes; ++plane) {
        for (std::size_t top = 0; top < picture.height; top += height) {
            for (std::size_t left = 0; left < picture.width; left += width) {
                const auto x = static_cast<std::uint32_t>(left);
                const auto y = static_cast<std::uint32_t>(top);
                const auto sample = static_cast<std::uint16_t>(plane);
                const tmsize_t got =
                    tiled ? TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, sample),
                                                part.data(), room)
                          : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, y, sample),
                                                 part.data(), room);
                const std::size_t rows = std::min<std::size_t>(height, picture.height - top);
                const std::size_t wanted =
                    (tiled ? std::size_t{height} : rows) * width * stride * 2;
                if (got < 0 || static_cast<std::size_t>(got) < wanted)
                    refuse_tiff(name, bytes.said);
                place(part, {left, top, width, rows, width * stride, plane, stride}, picture);
            }
        }
    }
}

}  // namespace

Picture decode_tiff(const std::string& bytes, const std::string& name) {
    TiffBytes source{bytes};
    const Tiff tiff = open_tiff(source);
    if (!tiff) {
        refuse_picture(name, "no TIFF, or one that is damaged",
                       "give a 16-bit linear TIFF; a raw file keeps its own ending");
    }
    const auto samples = tag_of<std::uint16_t>(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto bits = tag_of<std::uint16_t>(tiff.get(), TIFFTAG_BITSPERSAMPLE, 1);
    const auto format = tag_of<std::uint16_t>(tiff.get(), TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    const auto planar =
        tag_of<std::uint16_t>(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    if (bits != 16 || format != SAMPLEFORMAT_UINT) {
        refuse_picture(name,
                       fmt::format("{} bits a sample{}", bits,
                                   format == SAMPLEFORMAT_UINT ? "" : ", not whole numbers"),
                       "export it linear, with 16 bits");
    }
    Picture picture;
    picture.width = picture.lit_width = tag_of<std::uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH, 0);
    picture.height = picture.lit_height = tag_of<std::uint32_t>(tiff.get(), TIFFTAG_IMAGELENGTH, 0);
    picture.channels = samples >= 3 ? 3 : 1;
    if (samples == 0 || samples > 8) refuse_tiff(name, "");
    require_picture_size(name, picture.width, picture.height, samples);
    picture.samples.resize(picture.width * picture.height * picture.channels);
    if (planar == PLANARCONFIG_SEPARATE) {
        read_parts(tiff.get(), name, source, picture.channels, 1, picture);
    } else {
        read_parts(tiff.get(), name, source, 1, samples, picture);
    }
    return picture;
}

}  // namespace imgtune::workbench

#else

namespace imgtune::workbench {

Picture decode_tiff(const std::string&, const std::string& name) {
    refuse_picture(name, "this build reads no TIFF",
                   "build it with libtiff (Debian: libtiff-dev), or give another form");
}

}  // namespace imgtune::workbench

#endif
