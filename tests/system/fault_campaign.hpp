// Whole runs of the program on hardware that errs: random bits of its memory flip, from outside and at random
// moments, and each run must end in right digits or in a message, with no wrong file under its name.
//
// The seed is ZELMAR_TEST_SEED; ZELMAR_FAULT_RUNS is the number of runs, and ZELMAR_FAULT_RUN repeats the one
// of that index. A moment is one of the work: a part of the processor time that a run takes which nothing
// disturbs.
#pragma once

#include <algorithm>
#include <array>
#include <mutex>
#include <span>
#include <utility>

#include "compute/run/computed_run.hpp"
#include "sanitizer.hpp"
#include "shell/program.hpp"
#include "system/process_memory.hpp"
#include "test_seed.hpp"

namespace znp::testing {

struct CampaignSize {
    u64_t dec;
    unsigned weight;
};

struct CampaignForm {
    u64_t runs;
    std::vector<CampaignSize> sizes;
    std::vector<CampaignSize> sizes_of_sums;  // of the constants that take several times as long as Pi
};

enum class Place { block, tables, other };
enum class Outcome {
    right,
    recovered,   // right, behind a message that something is done again
    refused,     // a message, and no wrong file
    crashed,     // a signal
    hung,        // beyond the time limit
    wrong_told,  // a message, but a wrong file under its name
    wrong,       // a wrong file under its name, or none at all, and no message
};
inline constexpr const char* place_names[] = {"block", "tables", "other"};
inline constexpr const char* outcome_names[] = {"right", "recovered",  "refused",        "crashed",
                                                "hung",  "WRONG TOLD", "WRONG UNNOTICED"};

// What runs, with the files of an undisturbed run to compare with.
struct CampaignCase {
    ComputedAlgorithm what{};
    u64_t dec = 0, threads = 1;
    u64_t block_bytes = 0, table_bytes = 0;
    double wall_seconds = 0, processor_seconds = 0;  // of an undisturbed run
    std::string folder;                              // with its files

    std::vector<std::string> arguments() const {
        return {"custom", what.constant.name, "-dec:" + std::to_string(dec), "-T:" + std::to_string(threads),
                "-algorithm:" + std::to_string(what.algorithm)};
    }
};

struct Flip {
    double moment = 0;  // part of the undisturbed run's processor time
    bool made = false;
    u64_t offset = 0, bytes = 0;  // in its region, and of it
    unsigned bit = 0;
};

struct CampaignRun {
    u64_t index = 0;
    const CampaignCase* subject = nullptr;
    Place place = Place::block;
    std::vector<Flip> flips;
    Outcome outcome = Outcome::right;
    std::string ending, output, difference;
    bool forbidden = false;  // the system keeps processes apart

    u64_t made() const {
        return static_cast<u64_t>(
            std::count_if(flips.begin(), flips.end(), [](const Flip& f) { return f.made; }));
    }
};

// ---- A child ----------------------------------------------------------------------------------------------

struct ChildEnd {
    int status = 0;
    bool timed_out = false;
    double wall_seconds = 0, processor_seconds = 0;
    std::string output;
};

// Starts the program; poll(pid, status) is called in short intervals, and gives true once it has seen the end
// itself.
template <class Poll>
ChildEnd run_child(const std::vector<std::string>& arguments, const std::string& folder, double limit,
                   Poll poll) {
    const int out = temporary_file();
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = start_program(arguments, {}, out, folder);
    ChildEnd result;
    for (;;) {
        result.wall_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        siginfo_t info{};
        if (::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) != 0) std::abort();
        if (info.si_pid == child) {
            result.processor_seconds = processor_seconds(child).value_or(0);
            ::waitpid(child, &result.status, 0);
            break;
        }
        if (result.wall_seconds > limit) {
            result.timed_out = true;
            ::kill(child, SIGKILL);
            ::waitpid(child, &result.status, 0);
            break;
        }
        if (poll(child, result.status)) break;
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    result.output = file_contents(out);
    ::close(out);
    return result;
}

// ---- The campaign -----------------------------------------------------------------------------------------

class FaultCampaign {
  public:
    explicit FaultCampaign(const CampaignForm& form) : form_(form) {
        const ComputedAlgorithm subjects[] = {{{"pi", constant_id::pi, 0, 1}, 0},
                                              {{"pi", constant_id::pi, 0, 1}, 1},
                                              {{"e", constant_id::e, 0, 1}, 0},
                                              {{"sqrt:2", constant_id::sqrt, 2, 1}, 0},
                                              {{"phi", constant_id::golden_ratio, 0, 1}, 0}};
        const ComputedAlgorithm sums[] = {{{"arccoth:2", constant_id::arccoth, 2, 1}, 0},
                                          {{"zeta(3)", constant_id::zeta3, 0, 1}, 0},
                                          {{"lemniscate", constant_id::lemniscate, 0, 1}, 1},
                                          {{"catalan", constant_id::catalan, 0, 1}, 0},
                                          {{"catalan", constant_id::catalan, 0, 1}, 1},
                                          {{"gamma", constant_id::euler_gamma, 0, 1}, 0},
                                          {{"gamma", constant_id::euler_gamma, 0, 1}, 1}};
        prepare_all(form.sizes, subjects);
        prepare_all(form.sizes_of_sums, sums);
    }

    // Runs two at a time, and prints the table.
    void carry_out() {
        const u64_t only = number_from("ZELMAR_FAULT_RUN", ~u64_t{0});
        const u64_t count = number_from("ZELMAR_FAULT_RUNS", form_.runs);
        next_ = only != ~u64_t{0} ? only : 0;
        end_ = only != ~u64_t{0} ? only + 1 : count;
        std::thread other([this] { work(); });
        work();
        other.join();
        print_table();
    }

    u64_t runs() const { return runs_; }
    u64_t reached() const { return reached_; }  // runs in which a bit was flipped
    bool forbidden() const { return forbidden_; }
    u64_t total(Outcome outcome) const {
        u64_t sum = 0;
        for (const auto& row : table_) sum += row[static_cast<upL_t>(outcome)];
        return sum;
    }

  private:
    static u64_t number_from(const char* variable, u64_t otherwise) {
        const char* text = std::getenv(variable);
        return text == nullptr ? otherwise : std::strtoull(text, nullptr, 0);
    }

    void prepare_all(const std::vector<CampaignSize>& sizes, std::span<const ComputedAlgorithm> subjects) {
        for (const CampaignSize& size : sizes) {
            for (const ComputedAlgorithm& what : subjects) prepare(what, size);
        }
    }

    // Both thread counts of a size, with one folder of files.
    void prepare(const ComputedAlgorithm& what, const CampaignSize& size) {
        const std::string folder = folder_.path() + "/" + std::to_string(cases_.size());
        std::filesystem::create_directory(folder);
        for (const u64_t threads : {u64_t{1}, u64_t{2}}) {
            const ComputeParameters settings = settings_for(what, size.dec, threads);
            CampaignCase subject{
                what, size.dec, threads, settings.ML() + working_memory_margin, settings.memTW(),
                1e9,  1e9,      folder};
            for (int repeat = 0; repeat < 2; ++repeat) {
                const ChildEnd end =
                    run_child(subject.arguments(), folder, 600, [](pid_t, int&) { return false; });
                ASSERT_TRUE(WIFEXITED(end.status) && WEXITSTATUS(end.status) == 0) << end.output;
                subject.wall_seconds = std::min(subject.wall_seconds, end.wall_seconds);
                subject.processor_seconds = std::min(subject.processor_seconds, end.processor_seconds);
            }
            cases_.push_back(subject);
            weights_.push_back(size.weight);
        }
    }

    CampaignRun plan(u64_t index) const {
        std::mt19937_64 rng = make_rng(1'000'000 + index);
        CampaignRun run;
        run.index = index;
        run.subject = &cases_[std::discrete_distribution<upL_t>(weights_.begin(), weights_.end())(rng)];
        const unsigned chance = static_cast<unsigned>(rng() % 100);
        run.place = chance < 70 ? Place::block : chance < 95 ? Place::tables : Place::other;
        run.flips.resize(rng() % 2 == 0 ? 1 : 16);
        for (Flip& flip : run.flips) {
            flip.moment = std::uniform_real_distribution<double>(0, 1)(rng);
            flip.offset = rng();  // of the bytes that will be there
            flip.bit = static_cast<unsigned>(rng() % 8);
        }
        std::sort(run.flips.begin(), run.flips.end(),
                  [](const Flip& a, const Flip& b) { return a.moment < b.moment; });
        return run;
    }

    // False while the place is not there: the process starts, or has given it back.
    static bool make(CampaignRun& run, Flip& flip, const Halted& child, pid_t process) {
        const ProcessPlaces places = places_of(process, run.subject->block_bytes, run.subject->table_bytes);
        const auto& ranges = run.place == Place::block    ? places.block
                             : run.place == Place::tables ? places.tables
                                                          : places.other;
        for (const MemoryRange& range : ranges) flip.bytes += range.bytes();
        if (flip.bytes == 0) return false;
        u64_t at = flip.offset %= flip.bytes;
        for (const MemoryRange& range : ranges) {
            if (at < range.bytes()) {
                const int failure = child.flip(range.start + at, flip.bit);
                flip.made = failure == 0;
                run.forbidden |= failure == EACCES || failure == EPERM;
                break;
            }
            at -= range.bytes();
        }
        return true;
    }

    void carry_out(CampaignRun& run) const {
        const TemporaryFolder folder;
        const CampaignCase& subject = *run.subject;
        auto next = run.flips.begin();
        const double limit = std::max(20 * subject.wall_seconds, 10.0);
        const ChildEnd end =
            run_child(subject.arguments(), folder.path(), limit, [&](pid_t child, int& status) {
                const double used = processor_seconds(child).value_or(0);
                if (next == run.flips.end() || used < next->moment * subject.processor_seconds) return false;
                const Halted halted(child, status);
                if (!halted.halted()) return true;
                while (next != run.flips.end() && used >= next->moment * subject.processor_seconds &&
                       make(run, *next, halted, child)) {
                    ++next;
                }
                return false;
            });
        judge(run, end, folder.path());
    }

    // ---- What came of it

    enum class FileState { absent, right, wrong };

    static FileState compare(CampaignRun& run, const std::string& folder, const std::string& name) {
        if (!std::filesystem::exists(folder + "/" + name)) return FileState::absent;
        const std::string found = testing::file_text(folder + "/" + name);
        const std::string expected = testing::file_text(run.subject->folder + "/" + name);
        if (found == expected) return FileState::right;
        const upL_t length = std::min(found.size(), expected.size());
        const auto at = std::mismatch(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(length),
                                      expected.begin());
        u64_t differing = 0;
        for (upL_t i = 0; i < length; ++i) differing += found[i] != expected[i];
        run.difference += "  " + name + ": byte " + std::to_string(at.first - found.begin()) +
                          " is the first of " + std::to_string(differing) + " that differ, length " +
                          std::to_string(found.size()) + " of " + std::to_string(expected.size()) + "\n";
        return FileState::wrong;
    }

    static void judge(CampaignRun& run, const ChildEnd& end, const std::string& folder) {
        bool all_right = true, any_wrong = false;
        for (const auto& entry : std::filesystem::directory_iterator(run.subject->folder)) {
            const FileState state = compare(run, folder, entry.path().filename().string());
            all_right &= state == FileState::right;
            any_wrong |= state == FileState::wrong;
        }
        const auto says = [&](const char* text) { return end.output.find(text) != std::string::npos; };
        const bool exited = WIFEXITED(end.status);
        const bool finished = exited && WEXITSTATUS(end.status) == 0 && says("Last Digits:");
        const bool told = says("Exception Encountered") || says("Uncaught std exception") ||
                          (exited && WEXITSTATUS(end.status) != 0);
        run.output = end.output;
        run.ending = end.timed_out ? "killed at the time limit"
                     : exited      ? "exit code " + std::to_string(WEXITSTATUS(end.status))
                                   : "signal " + std::to_string(WTERMSIG(end.status));
        if (finished && all_right) {
            run.outcome = says("eattempting") || says("e-attempting") ? Outcome::recovered : Outcome::right;
        } else if (finished || (exited && !told)) {
            run.outcome = Outcome::wrong;
        } else if (any_wrong) {
            run.outcome = Outcome::wrong_told;
        } else if (end.timed_out) {
            run.outcome = Outcome::hung;
        } else {
            run.outcome = exited ? Outcome::refused : Outcome::crashed;
        }
    }

    // ---- Bookkeeping

    void work() {
        for (;;) {
            u64_t index;
            {
                const std::lock_guard lock(mutex_);
                if (next_ >= end_ || forbidden_) return;
                index = next_++;
            }
            CampaignRun run = plan(index);
            carry_out(run);
            const std::lock_guard lock(mutex_);
            record(run);
        }
    }

    void record(const CampaignRun& run) {
        ++runs_;
        reached_ += run.made() != 0;
        forbidden_ |= run.forbidden;
        ++table_[static_cast<upL_t>(run.place)][static_cast<upL_t>(run.outcome)];
        if (run.outcome != Outcome::right && run.outcome != Outcome::recovered &&
            run.outcome != Outcome::refused) {
            describe(run);
        } else if (end_ - next_ == 0 && runs_ == 1) {
            describe(run);  // the one that is repeated
        }
    }

    // What the run told last, without its colours and status lines.
    static std::string last_lines(const std::string& output) {
        std::string text, line;
        for (upL_t i = 0; i < output.size(); ++i) {
            if (output[i] == '\033')
                i = std::min(output.find('m', i), output.size() - 1);
            else if (output[i] == '\r')
                line.clear();
            else if (output[i] != '\n')
                line += output[i];
            else if (!line.empty())
                text += "  | " + std::exchange(line, {}) + "\n";
        }
        constexpr upL_t shown = 1500;
        return text.size() <= shown ? text : text.substr(text.find('\n', text.size() - shown) + 1);
    }

    static void describe(const CampaignRun& run) {
        std::printf("%s: ZELMAR_TEST_SEED=%llu ZELMAR_FAULT_RUN=%llu\n ",
                    outcome_names[static_cast<upL_t>(run.outcome)],
                    static_cast<unsigned long long>(test_seed()), static_cast<unsigned long long>(run.index));
        for (const std::string& word : run.subject->arguments()) std::printf(" %s", word.c_str());
        std::printf("; %s\n%s", run.ending.c_str(), run.difference.c_str());
        for (const Flip& flip : run.flips) {
            std::printf(
                "  at %.6f: %s, byte %llu of %llu, bit %u%s\n", flip.moment,
                place_names[static_cast<upL_t>(run.place)], static_cast<unsigned long long>(flip.offset),
                static_cast<unsigned long long>(flip.bytes), flip.bit, flip.made ? "" : ": not there");
        }
        std::printf("%s", last_lines(run.output).c_str());
        std::fflush(stdout);
    }

    void print_table() const {
        std::printf("ZELMAR_TEST_SEED=%llu, %llu runs, a bit flipped in %llu of them\n%-8s",
                    static_cast<unsigned long long>(test_seed()), static_cast<unsigned long long>(runs_),
                    static_cast<unsigned long long>(reached_), "");
        for (const char* name : outcome_names) std::printf("%16s", name);
        for (upL_t place = 0; place < table_.size(); ++place) {
            std::printf("\n%-8s", place_names[place]);
            for (const u64_t runs : table_[place])
                std::printf("%16llu", static_cast<unsigned long long>(runs));
        }
        std::printf("\n");
    }

    const CampaignForm form_;
    const TemporaryFolder folder_;
    std::vector<CampaignCase> cases_;
    std::vector<unsigned> weights_;

    std::mutex mutex_;
    u64_t next_ = 0, end_ = 0;
    u64_t runs_ = 0, reached_ = 0;
    bool forbidden_ = false;
    std::array<std::array<u64_t, std::size(outcome_names)>, std::size(place_names)> table_{};
};

// Carries the form out and requires what it must show.
inline void expect_nothing_wrong_unnoticed(const CampaignForm& form) {
#ifdef ZNP_SANITIZER
    GTEST_SKIP() << "a sanitizer lays out the memory in its own way";
#endif
    FaultCampaign campaign(form);
    ASSERT_FALSE(::testing::Test::HasFailure());
    campaign.carry_out();
    if (campaign.forbidden()) GTEST_SKIP() << "the system keeps processes out of each other's memory";
    EXPECT_EQ(campaign.total(Outcome::wrong), 0u);
    EXPECT_EQ(campaign.total(Outcome::wrong_told), 0u);
    EXPECT_GE(campaign.reached() * 10, campaign.runs() * 7);  // faults were there to be noticed
}

}  // namespace znp::testing
