#include "archive.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <new>
#include <set>
#include <thread>

#include "os.h"
#include "paths.h"
#include "threads.h"

namespace kx {
namespace {

namespace fs = std::filesystem;

using Identity = std::pair<std::uint64_t, std::uint64_t>;

std::optional<Identity> identity_of(const std::string &path) {
    const auto file = os::regular_file(path.c_str());
    return file ? std::optional(Identity{file->device, file->number}) : std::nullopt;
}

// ---- The plan ----

struct Found {
    std::string path;
    std::string name; // within the folder of the outputs
};

// Without what would lead out of the folder.
std::string inner_name(const std::string &path) {
    fs::path inner;
    for (const fs::path &part : path_of(path).lexically_normal().relative_path())
        if (part != "..") inner /= part;
    return text_of(inner);
}

class Finder {
  public:
    Finder(const FileChoices &files, const Tell &tell) : files_(files), tell_(tell) {
        for (const std::string &operand : files.operands)
            add(operand, text_of(path_of(operand).filename()));
        if (files.list) add_list(*files.list);
    }

    std::vector<Found> found;
    std::size_t failed = 0;

  private:
    void add(const std::string &path, const std::string &name) {
        std::error_code error;
        if (files_.walks_folders && path != "-" && fs::is_directory(path_of(path), error)) {
            add_folder(path, name == text_of(path_of(path).filename()) ? "" : name);
        } else {
            found.push_back({path, name});
        }
    }

    // In the order of names, which systems do not promise.
    void add_folder(const std::string &path, const fs::path &name) {
        std::error_code error;
        if (!files_.folder.empty() && fs::equivalent(path_of(path), path_of(files_.folder), error)) return;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator at(path_of(path), error), end; !error && at != end; at.increment(error))
            entries.push_back(*at);
        if (error) {
            ++failed;
            tell_(path, error.value());
        }
        std::ranges::sort(entries, {}, [](const fs::directory_entry &entry) { return entry.path(); });
        for (const fs::directory_entry &entry : entries) {
            const std::string own = text_of(entry.path());
            // Old files that -i kept, and what a process that was killed left behind, are no part of an archive.
            if (files_.in_place && !files_.backup_suffix.empty() && own.ends_with(files_.backup_suffix)) continue;
            if (is_temporary(own)) continue;
            const fs::path below = name / entry.path().filename();
            if (entry.is_directory(error) && !entry.is_symlink(error)) {
                add_folder(own, below);
            } else if (entry.is_regular_file(error) && !entry.is_symlink(error)) {
                found.push_back({own, text_of(below)});
            }
        }
    }

    void add_list(const std::string &list) {
        std::string text;
        Input input([&](const std::string &what, int error) { tell_(what, error); }, list);
        while (input.good()) {
            const Chunk chunk = input.next();
            text.append(chunk.bytes.begin(), chunk.bytes.end());
            input.consume(chunk.bytes.size());
            if (chunk.last) break;
        }
        if (!input.good()) ++failed;
        const char separator = files_.list_has_zeros ? '\0' : '\n';
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = std::min(text.find(separator, begin), text.size());
            const std::string name = text.substr(begin, end - begin);
            // A name in a list is never standard input.
            if (!name.empty()) add(name == "-" ? "./-" : name, inner_name(name));
            begin = end + 1;
        }
    }

    const FileChoices &files_;
    const Tell &tell_;
};

} // namespace

std::string fault_of(const FileChoices &files) {
    if (files.list_has_zeros && !files.list) return "-0 says how the names of --files-from are separated";
    if (static_cast<int>(files.in_place) + static_cast<int>(!files.folder.empty()) +
            static_cast<int>(!files.output.empty()) >
        1)
        return "-i, -O and -o exclude each other";
    const bool reads_standard = files.operands.empty() ? !files.list : std::ranges::count(files.operands, "-") != 0;
    if (reads_standard && (files.in_place || !files.folder.empty()))
        return "standard input has no name; -i and -O need files";
    return "";
}

Plan plan_jobs(const FileChoices &files, const Tell &tell) {
    Finder finder(files, tell);
    Plan plan{{}, finder.failed};
    std::set<Identity> inputs;
    const bool have_folder = !files.folder.empty();
    for (const Found &file : finder.found) {
        const auto identity = have_folder ? identity_of(file.path) : std::nullopt;
        if (identity) inputs.insert(*identity);
    }
    std::set<fs::path> places;
    std::map<std::string, std::string> outputs; // by name, what they are made of
    for (const Found &file : finder.found) {
        Job job{file.path, std::nullopt};
        if (files.in_place) {
            // Named twice, to be converted once. Two names of one file become two files.
            std::error_code error;
            const fs::path place = fs::weakly_canonical(path_of(file.path), error);
            if (!error && !places.insert(place).second) continue;
            job.in_place = true;
            job.output = file.path;
            job.how.keeps_times = true;
            if (!files.backup_suffix.empty()) job.how.backup = file.path + files.backup_suffix;
        } else if (have_folder) {
            job.output = text_of(path_of(files.folder) / path_of(file.name));
            const auto [known, is_new] = outputs.emplace(*job.output, file.path);
            const auto there = identity_of(*job.output);
            if (!is_new || (there && inputs.contains(*there))) {
                ++plan.failed;
                tell(file.path + ": " + *job.output +
                         (is_new ? " is an input; -i converts in place" : " is already made of " + known->second),
                     0);
                continue;
            }
        }
        plan.jobs.push_back(std::move(job));
    }
    return plan;
}

// ---- The work ----

namespace {

class Run {
  public:
    Run(const Plan &plan, const Choices &choices, const RunChoices &run, const std::string &output)
        : plan_(plan),
          run_(run),
          tell_([this](const std::string &what, int error) { this->tell(what, error); }),
          progress_(total_of(plan)),
          failed_(plan.failed) {
        const bool joins = std::ranges::any_of(plan.jobs, [](const Job &job) { return !job.output; });
        if (!joins) return;
        output_.emplace(tell_, output);
        joined_to_file_ = !is_standard(output);
        if (!output_->good() || (choices.writes_mark && !output_->write(byte_order_mark(choices.to)))) lose_output();
    }

    // A thread that fails ends the others, which may wait for its job.
    void work(const FormOf &form_of, const MakeLane &make_lane) try { do_jobs(form_of, make_lane); } catch (...) {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        turn_.notify_all();
        throw;
    }

    bool close() {
        progress_.clear();
        const bool wrote = !output_ || (!ended_ && (!joined_to_file_ || failed_ == 0) && output_->close());
        const std::size_t all = plan_.jobs.size() + plan_.failed;
        if (output_lost_) return false;
        if (run_.verbose && all > 1) {
            tell(std::to_string(all) + " files, " + std::to_string(failed_) + " failed, " +
                     counts_of(characters_, left_out_, replaced_, united_),
                 0);
        } else if (failed_ != 0 && all > 1 && !run_.quiet) {
            tell(std::to_string(failed_) + " of " + std::to_string(all) + " files failed", 0);
        }
        return wrote && failed_ == 0;
    }

  private:
    // What a job has to say and to write until those before it have ended.
    struct Waiting {
        ByteBuffer bytes;
        JobResult result;
    };

    void do_jobs(const FormOf &form_of, const MakeLane &make_lane) {
        std::vector<Lane> lanes; // of this thread
        for (;;) {
            const std::size_t number = begun_++;
            if (number >= plan_.jobs.size() || ended_) return;
            Waiting waiting;
            try {
                do_job(number, waiting, lanes, form_of, make_lane);
            } catch (const std::bad_alloc &) {
                waiting.result = {};
                waiting.result.messages.push_back({name_of(plan_.jobs[number]) + ": not enough memory", 0});
            }
            end(number, std::move(waiting));
        }
    }

    void do_job(std::size_t number, Waiting &waiting, std::vector<Lane> &lanes, const FormOf &form_of,
                const MakeLane &make_lane) {
        Surroundings surroundings;
        surroundings.write = [&](std::span<const std::uint8_t> bytes) { return write(number, waiting, bytes); };
        surroundings.progress = [&](std::uint64_t more) { show_progress(number, more); };
        const Job &job = plan_.jobs[number];
        std::vector<JobResult::Message> messages; // also of the input
        const Tell tell = [&](const std::string &what, int error) { messages.push_back({what, error}); };
        auto input = open_input(job, tell);
        const auto form = input ? form_of(*input, tell) : std::nullopt;
        if (form) {
            auto lane = std::ranges::find(lanes, form, [](const Lane &known) { return known.choices.from; });
            if (lane == lanes.end()) lane = lanes.insert(lane, make_lane(*form));
            waiting.result = convert(job, std::move(input), lane->choices, *lane->converter, surroundings);
        }
        auto &told = waiting.result.messages;
        told.insert(told.begin(), messages.begin(), messages.end());
    }

    static std::string name_of(const Job &job) { return job.input == "-" ? "(standard input)" : job.input; }

    static std::uint64_t total_of(const Plan &plan) {
        if (!os::is_terminal(os::kStandardError)) return 0;
        std::uint64_t total = 0;
        for (const Job &job : plan.jobs) {
            const auto file = os::regular_file(job.input.c_str());
            if (!file) return 0;
            total += file->size;
        }
        return total;
    }

    static std::string counts_of(std::uint64_t characters, std::uint64_t left_out, std::uint64_t replaced,
                                 std::uint64_t united) {
        return std::to_string(characters) + (characters == 1 ? " character, " : " characters, ") +
               std::to_string(replaced) + " replaced, " + std::to_string(left_out) + " left out, " +
               std::to_string(united) + " united";
    }

    void tell(const std::string &what, int error) {
        progress_.clear();
        report(run_.command, what, error);
    }

    bool write(std::size_t number, Waiting &waiting, std::span<const std::uint8_t> bytes) {
        constexpr std::size_t most = std::size_t{64} << 20; // that waits, of all jobs
        std::unique_lock lock(mutex_);
        if (number != next_ && bytes_waiting_ + bytes.size() <= most) {
            waiting.bytes.insert(waiting.bytes.end(), bytes.begin(), bytes.end());
            bytes_waiting_ += bytes.size();
            return !ended_;
        }
        turn_.wait(lock, [&] { return number == next_ || ended_; });
        return write_waiting(waiting) && put(bytes);
    }

    bool write_waiting(Waiting &waiting) {
        const bool written = put(waiting.bytes);
        bytes_waiting_ -= waiting.bytes.size();
        waiting.bytes.clear();
        return written;
    }

    bool put(std::span<const std::uint8_t> bytes) {
        if (!ended_ && !bytes.empty() && !output_->write(bytes)) lose_output();
        return !ended_;
    }

    void lose_output() {
        output_lost_ = true;
        ended_ = true;
    }

    void end(std::size_t number, Waiting waiting) {
        const std::lock_guard lock(mutex_);
        waiting_.emplace(number, std::move(waiting));
        for (auto first = waiting_.begin(); first != waiting_.end() && first->first == next_; ++next_) {
            write_waiting(first->second);
            tell_result(plan_.jobs[next_], first->second.result);
            first = waiting_.erase(first);
        }
        turn_.notify_all();
    }

    void tell_result(const Job &job, const JobResult &result) {
        for (const auto &message : result.messages)
            tell(message.what, message.error);
        characters_ += result.characters;
        replaced_ += result.replaced.total();
        left_out_ += result.left_out.total();
        united_ += result.united.total();
        if (!result.done) {
            ++failed_;
            if (joined_to_file_) ended_ = true; // it will not be put in its place
            return;
        }
        const std::string name = name_of(job);
        if (run_.verbose) {
            tell(name + ": " + result.form + ", " +
                     counts_of(result.characters, result.left_out.total(), result.replaced.total(),
                               result.united.total()),
                 0);
        }
        if (run_.quiet) return;
        const auto tell_tally = [&](const Tally &tally, const char *what) {
            if (tally.total() == 0) return;
            const std::string characters = tally.total() == 1 ? " character " : " characters ";
            tell(name + ": " + std::to_string(tally.total()) + characters + what + ": " + tally.list(), 0);
        };
        tell_tally(result.left_out, "left out");
        tell_tally(result.replaced, "replaced");
        tell_tally(result.united, "written as others");
    }

    void show_progress(std::size_t number, std::uint64_t more) {
        const std::uint64_t done = bytes_done_ += more;
        const std::unique_lock lock(mutex_, std::try_to_lock);
        if (!lock) return;
        const std::string name = name_of(plan_.jobs[number]);
        const std::size_t files = plan_.jobs.size();
        progress_.at(done, files == 1 ? name : std::to_string(next_) + " of " + std::to_string(files) + " files");
    }

    const Plan &plan_;
    const RunChoices &run_;
    Tell tell_;
    std::atomic<std::size_t> begun_ = 0;
    std::atomic<std::uint64_t> bytes_done_ = 0;
    std::atomic<bool> ended_ = false; // what is not begun yet would be for nothing

    std::mutex mutex_; // over all below
    std::condition_variable turn_;
    Progress progress_;
    std::optional<Output> output_;
    bool joined_to_file_ = false;
    bool output_lost_ = false; // which has been told, or is nobody's concern
    std::size_t next_ = 0;     // the first job that has not ended
    std::map<std::size_t, Waiting> waiting_;
    std::size_t bytes_waiting_ = 0;
    std::size_t failed_;
    std::uint64_t characters_ = 0;
    std::uint64_t replaced_ = 0;
    std::uint64_t left_out_ = 0;
    std::uint64_t united_ = 0;
};

} // namespace

bool run_plan(const Plan &plan, const Choices &choices, const RunChoices &run, const std::string &output,
              const FormOf &form_of, const MakeLane &make_lane) {
    constexpr std::size_t most = 64;
    const std::size_t wanted = run.threads != 0 ? run.threads : std::thread::hardware_concurrency();
    const std::size_t threads = std::clamp(std::min(wanted, plan.jobs.size()), std::size_t{1}, most);
    Run work(plan, choices, run, output);
    in_threads(static_cast<unsigned>(threads), [&](unsigned) { work.work(form_of, make_lane); });
    return work.close();
}

} // namespace kx
