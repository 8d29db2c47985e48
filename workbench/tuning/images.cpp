#include "workbench/tuning/images.h"

#include <fmt/format.h>

#include <utility>

#include "workbench/tuning/fields.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {

namespace {

struct ImageFile {
    Part part;
    const char* name;
    const char* path;  ///< of the fields it holds
};

constexpr ImageFile kCcmFile{Part::ccm, "ccm.bin", "ccm"};
constexpr ImageFile kColorFile{Part::color, "color.bin", "color"};
constexpr ImageFile kColorTuningFile{Part::color_tuning, "pca.bin", "color.tuning"};
constexpr const char* kCallerFile = "caller.yaml";

void add_fault(Faults& faults, const std::string& file, std::string message) {
    faults.add({.code = "T010", .file = file, .message = std::move(message)});
}

const StoredImage* find(const std::vector<StoredImage>& images, std::string_view name) {
    for (const StoredImage& image : images) {
        if (image.name == name) return &image;
    }
    return nullptr;
}

std::string path_of(const std::string& folder, const char* name) {
    return folder + "/" + name;
}

void store_bytes(const std::string& bytes, Part part, Tuning& tuning) {
    for (std::size_t w = 0; w < bytes.size() / 4; ++w) {
        std::uint32_t word = 0;
        for (unsigned b = 0; b < 4; ++b) {
            word |= std::uint32_t{static_cast<unsigned char>(bytes[4 * w + b])} << (8 * b);
        }
        store_word(tuning, part, w, word);
    }
}

/// False when the image is not there; a faulty one is reported.
bool read_part(const std::vector<StoredImage>& images, const std::string& folder,
               const ImageFile& image, Faults& faults, Tuning& tuning) {
    const StoredImage* const stored = find(images, image.name);
    if (stored == nullptr) return false;
    const std::string file = path_of(folder, image.name);
    faults.set_place(image.path, file, 0);
    const std::size_t size = 4 * part_words(image.part);
    const std::string& bytes = stored->bytes;
    if (bytes.size() != size) {
        // Longer files are not read to their end.
        add_fault(faults, file,
                  fmt::format("{} bytes long; it must have {} ({} words)",
                              bytes.size() > size ? fmt::format("more than {}", size)
                                                  : std::to_string(bytes.size()),
                              size, size / 4));
        return true;
    }
    store_bytes(bytes, image.part, tuning);
    return true;
}

std::string part_bytes(const Tuning& tuning, Part part) {
    std::string bytes;
    for (std::size_t w = 0; w < part_words(part); ++w) {
        const std::uint32_t word = load_word(tuning, part, w);
        for (unsigned b = 0; b < 4; ++b) bytes += static_cast<char>((word >> (8 * b)) & 0xffU);
    }
    return bytes;
}

}  // namespace

std::vector<std::string> stored_image_names() {
    return {kCcmFile.name, kColorFile.name, kColorTuningFile.name, kCallerFile};
}

Tuning from_images(const std::vector<StoredImage>& images, const std::string& folder,
                   Faults& faults) {
    Tuning tuning;
    faults.set_place("", folder, 0);
    if (const StoredImage* const caller = find(images, kCallerFile); caller != nullptr) {
        read_settings(caller->bytes, path_of(folder, kCallerFile), faults, tuning);
    }
    faults.set_place("", folder, 0);
    tuning.has_ccm = read_part(images, folder, kCcmFile, faults, tuning);
    tuning.has_color = read_part(images, folder, kColorFile, faults, tuning);
    const bool has_pca = read_part(images, folder, kColorTuningFile, faults, tuning);
    if (tuning.has_color != has_pca) {
        add_fault(faults, path_of(folder, has_pca ? kColorFile.name : kColorTuningFile.name),
                  "missing; color.bin and pca.bin stand together");
    } else if (!tuning.has_ccm && !tuning.has_color) {
        add_fault(faults, folder,
                  "holds no stored images; it must hold ccm.bin, or color.bin and "
                  "pca.bin, or all three");
    }
    return tuning;
}

std::string stored_fields(const std::string& bytes) {
    const ImageFile* image = nullptr;
    for (const ImageFile* each : {&kCcmFile, &kColorFile, &kColorTuningFile}) {
        if (bytes.size() == 4 * part_words(each->part)) image = each;
    }
    if (image == nullptr) return "";
    Tuning tuning;
    store_bytes(bytes, image->part, tuning);
    std::string text;
    for (const FieldRef& field : fields()) {
        if (field.record->part != image->part) continue;
        text += fmt::format("{}: {}\n", field.path(), field.read(tuning));
    }
    for (const OpaqueWord& word : opaque_words()) {
        const std::uint32_t bits =
            word.part == image->part ? load_word(tuning, word.part, word.word) & word.mask : 0;
        if (bits != 0) text += fmt::format("{}: 0x{:08x}\n", word.path, bits);
    }
    return text;
}

std::vector<StoredImage> to_images(const Tuning& tuning) {
    std::vector<StoredImage> images;
    const auto take = [&](const ImageFile& image, bool present) {
        if (present) images.push_back({image.name, part_bytes(tuning, image.part)});
    };
    take(kCcmFile, tuning.has_ccm);
    take(kColorFile, tuning.has_color);
    take(kColorTuningFile, tuning.has_color);
    images.push_back({kCallerFile, write_settings(tuning)});
    return images;
}

}  // namespace imgtune::workbench
