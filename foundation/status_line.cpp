#include "foundation/status_line.hpp"

#include <utility>

#include "shell/console.hpp"

namespace znp {

namespace {

constexpr char start_color = 'W';
constexpr const char* cut_mark = " ...";
constexpr upL_t cut_mark_columns = 4;

// Prints in colours that are sent only where they change.
class ColoredWriter {
  public:
    void print(char color, const std::string& text) {
        if (color != ' ' && color != color_) {
            Console::set_color(color);
            color_ = color;
        }
        Console::print(text);
    }

    // The line ends in the colour in which the next one starts.
    void finish() { print(start_color, {}); }

  private:
    char color_ = start_color;
};

}  // namespace

StatusLine::StatusLine(upL_t width, double interval_seconds, bool end_with_newline)
    : width_(width), end_with_newline_(end_with_newline), interval_(interval_seconds), start_(Time::now()) {}

void StatusLine::set_label(std::string text) {
    segments_.clear();
    add(start_color, std::move(text));
    label_segments_ = segments_.size();
}

void StatusLine::add(char color, std::string text) {
    segments_.emplace_back(color, std::move(text));
}

void StatusLine::clear() {
    segments_.resize(label_segments_);
}

void StatusLine::restart() {
    start_ = Time::now();
    last_draw_ = start_;
}

void StatusLine::erase() {
    Console::print('\r' + std::string(width_, ' ') + '\r');
    drawn_ = false;
}

void StatusLine::update(Update mode) {
    if (mode == Update::nothing) return;
    const Time now = Time::now();
    if (mode == Update::if_due && seconds_between(last_draw_, now) < interval_) return;
    draw();
    last_draw_ = now;
}

void StatusLine::draw() {
    Console::clear_line(width_);
    ColoredWriter writer;
    upL_t column = 0;
    for (const auto& [color, text] : segments_) {
        if (text.size() > width_ - column) {
            if (width_ - column >= cut_mark_columns) writer.print(start_color, cut_mark);
            break;
        }
        writer.print(color, text);
        column += text.size();
    }
    writer.finish();
    if (end_with_newline_) Console::print_newline();
    drawn_ = true;
}

}  // namespace znp
