#ifndef IMGTUNE_CLI_LIVE_INPUT_H
#define IMGTUNE_CLI_LIVE_INPUT_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/phone_log.h"
#include "workbench/files/live_source.h"
#include "workbench/files/output_file.h"
#include "workbench/studies/live.h"

// What the verbs share that follow a phone's log.

namespace imgtune::cli {

struct LiveInputOptions {
    PhoneLogOptions log;
    bool demo = false;
    std::string record;
    std::string raw;
    bool force = false;
    workbench::SummaryOptions summary;
};

/// Adds --camera, --demo, --record, --log, --force and --fps.
void add_live_input(const Verb& verb, LiveInputOptions& options);

/// The frames of a log as they come, or of the demonstration, kept in the files that were asked
/// for.
class LiveInput {
  public:
    /// `ahead`: bytes of the input that were read already. Throws BadInput for options that do not
    /// fit together, and for files that cannot be used.
    LiveInput(workbench::EventLoop& loop, const workbench::Tuning& tuning,
              const LiveInputOptions& options, const std::vector<std::string>& inputs,
              std::string ahead = {});
    LiveInput(const LiveInput&) = delete;
    LiveInput& operator=(const LiveInput&) = delete;

    bool next();
    const workbench::LiveFrames& frames() const { return *frames_; }
    const std::string& name() const { return name_; }

    /// Puts the files in their place; without a frame, that of the raw lines alone.
    void keep();

  private:
    std::string name_;
    std::optional<workbench::OutputFile> record_;
    std::optional<workbench::OutputFile> raw_;
    std::unique_ptr<workbench::FrameFile> demo_frames_;
    std::unique_ptr<workbench::ByteSource> source_;
    std::optional<workbench::LiveFrames> frames_;
};

}  // namespace imgtune::cli

#endif
