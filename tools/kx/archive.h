// Many files: which they are, where what becomes of them goes, and the work on them in several threads.
#pragma once

#include "job.h"

namespace kx {

// The files as the command line names them.
struct FileChoices {
    std::vector<std::string> operands;
    std::optional<std::string> list; // a file with names
    bool list_has_zeros = false;     // between the names, not line ends
    bool walks_folders = false;
    bool in_place = false;
    std::string backup_suffix;
    std::string folder; // for the outputs; empty: none
    std::string output; // empty: standard output
};

// What is wrong with the choices taken together, or an empty string.
std::string fault_of(const FileChoices &files);

struct Plan {
    std::vector<Job> jobs;
    std::size_t failed = 0; // files that were named and cannot be a job; that has been told
};
Plan plan_jobs(const FileChoices &files, const Tell &tell);

struct RunChoices {
    const char *command;
    unsigned threads; // 0: as many as there are processors
    bool verbose;     // a line for each file, and one for all
    bool quiet;       // no word about characters that came out as others
};

// What a thread converts by, for one form of the inputs.
struct Lane {
    Choices choices;
    std::unique_ptr<ChunkConverter> converter;
};
// Both are called by several threads.
using MakeLane = std::function<Lane(const Encoding &from)>;
// Nothing: that has been told. It may look at what the input begins with.
using FormOf = std::function<std::optional<Encoding>(Input &input, const Tell &tell)>;

// Does the work, with what joins written to `output` and all messages told in the order of the jobs. Returns whether
// all was done.
bool run_plan(const Plan &plan, const Choices &choices, const RunChoices &run, const std::string &output,
              const FormOf &form_of, const MakeLane &make_lane);

} // namespace kx
