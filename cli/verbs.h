#ifndef IMGTUNE_CLI_VERBS_H
#define IMGTUNE_CLI_VERBS_H

#include "cli/verb.h"

namespace imgtune::workbench {}

namespace imgtune::cli {

using namespace workbench;

enum ExitStatus : int { kFine = 0, kFindings = 1, kBadInput = 2, kErrors = 3 };

// Each adds its verb with options, help and an example.
void add_calibrate(const Verbs& verbs);
void add_check(const Verbs& verbs);
void add_convert(const Verbs& verbs);
void add_pack(const Verbs& verbs);
void add_unpack(const Verbs& verbs);
void add_new(const Verbs& verbs);
void add_replay(const Verbs& verbs);
void add_explain(const Verbs& verbs);
void add_export(const Verbs& verbs);
void add_import(const Verbs& verbs);
void add_judge(const Verbs& verbs);
void add_report(const Verbs& verbs);
void add_view(const Verbs& verbs);
void add_smooth(const Verbs& verbs);
void add_sweep(const Verbs& verbs);
void add_diff(const Verbs& verbs);
void add_frames(const Verbs& verbs);
void add_props(const Verbs& verbs);
void add_schema(const Verbs& verbs);
void add_verify(const Verbs& verbs);
void add_watch(const Verbs& verbs);

}  // namespace imgtune::cli

#endif
