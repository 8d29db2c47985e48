#include "support/picture_writers.h"

#include <png.h>
#include <tiffio.h>

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace imgtune::workbench {

namespace {

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

Tiff create(const std::string& path, const Picture& picture) {
    Tiff tiff(TIFFOpen(path.c_str(), "w"), &TIFFClose);
    if (!tiff) throw std::runtime_error("cannot write " + path);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.width));
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(picture.height));
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(picture.channels));
    TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    return tiff;
}

void write_rows(TIFF* tiff, const Picture& picture) {
    for (std::size_t y = 0; y < picture.height; ++y) {
        std::vector<std::uint16_t> row(
            picture.samples.begin() +
                static_cast<std::ptrdiff_t>(y * picture.width * picture.channels),
            picture.samples.begin() +
                static_cast<std::ptrdiff_t>((y + 1) * picture.width * picture.channels));
        TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y));
    }
}

}  // namespace

void write_dng(const std::string& path, const Picture& picture, const DngTags& tags) {
    const Tiff tiff = create(path, picture);
    TIFF* const to = tiff.get();
    TIFFSetField(to, TIFFTAG_SUBFILETYPE, 0);
    TIFFSetField(to, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CFA);
    TIFFSetField(to, TIFFTAG_ORIENTATION, tags.orientation);
    TIFFSetField(to, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(picture.height));
    TIFFSetField(to, TIFFTAG_MAKE, "Imgtune");
    TIFFSetField(to, TIFFTAG_MODEL, "Scene");
    TIFFSetField(to, TIFFTAG_UNIQUECAMERAMODEL, "Imgtune Scene");
    const std::array<std::uint8_t, 4> version{1, 4, 0, 0};
    TIFFSetField(to, TIFFTAG_DNGVERSION, version.data());
    const std::array<std::uint16_t, 2> cell{2, 2};
    TIFFSetField(to, TIFFTAG_CFAREPEATPATTERNDIM, cell.data());
    // The pattern counts from the corner of what is lit.
    std::array<std::uint8_t, 4> order{};
    for (std::size_t i = 0; i < 4; ++i) {
        order[i] =
            static_cast<std::uint8_t>(picture.color(i % 2 + picture.left, i / 2 + picture.top));
    }
    TIFFSetField(to, TIFFTAG_CFAPATTERN, 4, order.data());
    const std::array<std::uint32_t, 4> lit{
        static_cast<std::uint32_t>(picture.top), static_cast<std::uint32_t>(picture.left),
        static_cast<std::uint32_t>(picture.top + picture.lit_height),
        static_cast<std::uint32_t>(picture.left + picture.lit_width)};
    TIFFSetField(to, TIFFTAG_ACTIVEAREA, lit.data());
    std::vector<float> black(tags.black_cell.begin(), tags.black_cell.end());
    if (black.empty()) {
        black.push_back(static_cast<float>(picture.black.levels.front()));
    } else {
        TIFFSetField(to, TIFFTAG_BLACKLEVELREPEATDIM, cell.data());
    }
    TIFFSetField(to, TIFFTAG_BLACKLEVEL, static_cast<int>(black.size()), black.data());
    if (tags.says_white && picture.white) {
        const auto white = static_cast<std::uint32_t>(*picture.white);
        TIFFSetField(to, TIFFTAG_WHITELEVEL, 1, &white);
    }
    const std::array<float, 9> matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};
    TIFFSetField(to, TIFFTAG_COLORMATRIX1, 9, matrix.data());
    write_rows(to, picture);
}

void write_tiff(const std::string& path, const Picture& picture, bool tiled) {
    const Tiff tiff = create(path, picture);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC,
                 picture.channels == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    if (!tiled) {
        TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, 7U);
        write_rows(tiff.get(), picture);
        return;
    }
    constexpr std::uint32_t kTile = 64;
    TIFFSetField(tiff.get(), TIFFTAG_TILEWIDTH, kTile);
    TIFFSetField(tiff.get(), TIFFTAG_TILELENGTH, kTile);
    std::vector<std::uint16_t> tile(std::size_t{kTile} * kTile * picture.channels);
    for (std::uint32_t top = 0; top < picture.height; top += kTile) {
        for (std::uint32_t left = 0; left < picture.width; left += kTile) {
            for (std::size_t i = 0; i < tile.size(); ++i) {
                const std::size_t x = left + i / picture.channels % kTile;
                const std::size_t y = top + i / picture.channels / kTile;
                tile[i] = x < picture.width && y < picture.height
                              ? picture.sample(x, y, i % picture.channels)
                              : std::uint16_t{0};
            }
            TIFFWriteTile(tiff.get(), tile.data(), left, top, 0, 0);
        }
    }
}

void write_png(const std::string& path, const Picture& picture) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) throw std::runtime_error("cannot write " + path);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), 16,
                 picture.channels == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_swap(png);
    for (std::size_t y = 0; y < picture.height; ++y) {
        png_write_row(png, reinterpret_cast<png_const_bytep>(
                               &picture.samples[y * picture.width * picture.channels]));
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
}

}  // namespace imgtune::workbench
