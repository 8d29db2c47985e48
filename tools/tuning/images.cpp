#include "tuning/images.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <vector>

#include "support/bad_input.h"
#include "support/output_file.h"
#include "tuning/fields.h"
#include "tuning/yaml_io.h"

namespace imgtune::tool {

namespace fs = std::filesystem;

namespace {

struct ImageFile {
    Part part;
    const char* name;
    const char* path;  ///< of the fields it holds
};

constexpr ImageFile kCcmFile{Part::ccm, "ccm.bin", "ccm"};
constexpr ImageFile kColorFile{Part::color, "color.bin", "color"};
constexpr ImageFile kPcaFile{Part::pca, "pca.bin", "color.tuning"};
constexpr const char* kCallerFile = "caller.yaml";

void add_fault(Faults& faults, const std::string& file, std::string message, std::string value,
               std::string allowed) {
    Fault fault;
    fault.code = "T010";
    fault.file = file;
    fault.message = std::move(message);
    fault.value = std::move(value);
    fault.allowed = std::move(allowed);
    faults.add(std::move(fault));
}

/// False when the file is not there; a faulty one is reported.
bool read_part(const std::string& folder, const ImageFile& image, Faults& faults, Tuning& tuning) {
    const std::string file = (fs::path(folder) / image.name).string();
    std::error_code error;
    if (!fs::exists(file, error) && !error) return false;
    faults.set_place(image.path, file, 0);
    const std::size_t size = 4 * part_words(image.part);
    std::vector<char> bytes(size + 1);
    std::ifstream in(file, std::ios::binary);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!in.is_open() || in.bad()) {
        add_fault(faults, file, std::string("cannot read the file: ") + std::strerror(errno), "",
                  "");
        return true;
    }
    const auto got = static_cast<std::size_t>(in.gcount());
    if (got != size) {
        add_fault(
            faults, file, "wrong size",
            got > size ? fmt::format("more than {} bytes", size) : fmt::format("{} bytes", got),
            fmt::format("{} bytes ({} words)", size, size / 4));
        return true;
    }
    for (std::size_t w = 0; w < size / 4; ++w) {
        std::uint32_t word = 0;
        for (unsigned b = 0; b < 4; ++b) {
            word |= std::uint32_t{static_cast<unsigned char>(bytes[4 * w + b])} << (8 * b);
        }
        store_word(tuning, image.part, w, word);
    }
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

Tuning read_images(const std::string& folder, Faults& faults) {
    Tuning tuning;
    faults.set_place("", folder, 0);
    const std::string caller = (fs::path(folder) / kCallerFile).string();
    std::error_code error;
    if (fs::exists(caller, error) || error) {
        if (std::ifstream in(caller, std::ios::binary); in) {
            read_caller_yaml(in, caller, faults, tuning);
        } else {
            add_fault(faults, caller, std::string("cannot read the file: ") + std::strerror(errno),
                      "", "");
        }
    }
    faults.set_place("", folder, 0);
    tuning.has_ccm = read_part(folder, kCcmFile, faults, tuning);
    tuning.has_color = read_part(folder, kColorFile, faults, tuning);
    const bool has_pca = read_part(folder, kPcaFile, faults, tuning);
    if (tuning.has_color != has_pca) {
        const char* missing = has_pca ? kColorFile.name : kPcaFile.name;
        add_fault(faults, (fs::path(folder) / missing).string(), "missing file", "",
                  "color.bin and pca.bin stand together");
    } else if (!tuning.has_ccm && !tuning.has_color) {
        add_fault(faults, folder, "no stored images in this folder", "",
                  "ccm.bin, or color.bin and pca.bin, or all three");
    }
    return tuning;
}

void write_images(const std::string& folder, const Tuning& tuning) {
    std::vector<std::pair<const char*, std::string>> contents;
    const auto take = [&](const ImageFile& image, bool present) {
        if (present) {
            contents.emplace_back(image.name, part_bytes(tuning, image.part));
        } else if (const fs::path old = fs::path(folder) / image.name; fs::exists(old)) {
            throw BadInput(fmt::format(
                "{}: stands there already, but the tuning has no such part; remove it or name "
                "another folder",
                old.string()));
        }
    };
    try {
        take(kCcmFile, tuning.has_ccm);
        take(kColorFile, tuning.has_color);
        take(kPcaFile, tuning.has_color);
        Tuning settings;
        settings.name = tuning.name;
        settings.caller = tuning.caller;
        std::ostringstream caller;
        write_yaml(caller, settings);
        contents.emplace_back(kCallerFile, caller.str());

        const bool made = fs::create_directories(folder);
        std::vector<std::unique_ptr<OutputFile>> files;
        try {
            for (const auto& [name, bytes] : contents) {
                files.push_back(std::make_unique<OutputFile>((fs::path(folder) / name).string()));
                files.back()->write(bytes);
                files.back()->check();
            }
            for (const auto& file : files) file->commit();
        } catch (...) {
            files.clear();
            std::error_code ignored;
            if (made) fs::remove(folder, ignored);
            throw;
        }
    } catch (const fs::filesystem_error& error) {
        throw BadInput(fmt::format("{}: {}", folder, error.code().message()));
    }
}

}  // namespace imgtune::tool
