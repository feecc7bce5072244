#include "foundation/event_log.hpp"

#include "foundation/strings.hpp"

namespace znp {

namespace {

constexpr const char* line_end = "\r\n";  // the log is stored as it is in text files
constexpr u64_t last_thousandth = 999;

}  // namespace

std::string event_seconds_text(double seconds) {
    const u64_t whole = seconds > 0 ? static_cast<u64_t>(seconds) : 0;
    const double fraction = seconds > 0 ? seconds - static_cast<double>(whole) : 0;
    const u64_t thousandths = static_cast<u64_t>((fraction + 0.0005) * 1000);
    return format_printf(32, "%lu.%03lu", whole,
                         thousandths < last_thousandth ? thousandths : last_thousandth);
}

EventLog::EventLog() : start_(Time::now()) {}

void EventLog::add(const std::string& text) {
    text_ += current_time_text() + '\t' + event_seconds_text(seconds_between(start_, Time::now())) + '\t' +
             text + line_end;
}

}  // namespace znp
