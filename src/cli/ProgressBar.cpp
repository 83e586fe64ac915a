#include "cli/ProgressBar.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <iostream>
#include <streambuf>
#include <string>

#include "run/Progress.h"

namespace {

bool AllDigits(const std::string& text, std::size_t from, std::size_t to) {
  if (from >= to) return false;
  for (std::size_t i = from; i < to; ++i)
    if (text[i] < '0' || text[i] > '9') return false;
  return true;
}

}  // namespace

bool IsProgressLine(const std::string& line) {
  if (line.compare(0, 2, "\t\t") != 0) return false;
  if (line.compare(2, 9, "Spectra: ") == 0) return true;
  const std::size_t slash = line.find(" / ");
  if (slash == std::string::npos) return AllDigits(line, 2, line.size());  // "\t\t200"
  return AllDigits(line, 2, slash) && AllDigits(line, slash + 3, line.size());
}

// A stream buffer in front of standard output's: whole lines go through,
// progress lines are dropped, and the bar is cleared before a line and drawn
// again after it.
class CProgressBar::Impl : public std::streambuf {
 public:
  explicit Impl(std::streambuf* out) : out_(out) {}
  std::streambuf* Original() const { return out_; }

  void Update(const std::string& task, uint64_t done, uint64_t total) {
    task_ = task;
    done_ = done;
    total_ = total;
    if (done >= total) {  // a finished task leaves the line to the stage's own words
      Clear();
      task_.clear();
      return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now - lastDraw_ < std::chrono::milliseconds(100)) return;
    lastDraw_ = now;
    Draw();
  }

  void Finish() {
    if (!line_.empty()) Emit();
    Clear();
    out_->pubsync();
  }

 protected:
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    line_.push_back(traits_type::to_char_type(c));
    if (c == '\n') Emit();
    return c;
  }

  std::streamsize xsputn(const char* s, std::streamsize n) override {
    for (std::streamsize i = 0; i < n; ++i) overflow(traits_type::to_int_type(s[i]));
    return n;
  }

  int sync() override { return out_->pubsync(); }

 private:
  void Emit() {
    std::string text;
    text.swap(line_);
    if (!text.empty() && text.back() == '\n' && IsProgressLine(text.substr(0, text.size() - 1))) {
      return;
    }
    Clear();
    out_->sputn(text.data(), static_cast<std::streamsize>(text.size()));
    Draw();
  }

  void Clear() {
    if (!drawn_) return;
    out_->sputn("\r\033[K", 4);
    drawn_ = false;
  }

  void Draw() {
    if (task_.empty() || total_ == 0) return;
    constexpr int kWidth = 30;
    const uint64_t done = done_ > total_ ? total_ : done_;
    const int filled = static_cast<int>(kWidth * done / total_);
    std::string task = task_;
    if (task.size() > 40) task = "..." + task.substr(task.size() - 37);
    std::string bar = "\r\033[K" + task + " [" + std::string(filled, '#') +
                      std::string(kWidth - filled, '.') + "] " +
                      std::to_string(100 * done / total_) + "% " + std::to_string(done) + "/" +
                      std::to_string(total_);
    out_->sputn(bar.data(), static_cast<std::streamsize>(bar.size()));
    out_->pubsync();
    drawn_ = true;
  }

  std::streambuf* out_;
  std::string line_;
  std::string task_;
  uint64_t done_ = 0;
  uint64_t total_ = 0;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point lastDraw_;
};

std::unique_ptr<CProgressBar> CProgressBar::StartIfTerminal() {
  if (!::isatty(STDOUT_FILENO)) return nullptr;
  std::cout.flush();
  return std::unique_ptr<CProgressBar>(new CProgressBar(std::make_unique<Impl>(std::cout.rdbuf())));
}

CProgressBar::CProgressBar(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {
  Impl* bar = impl_.get();
  std::cout.rdbuf(bar);
  SetProgressSink([bar](const std::string& task, uint64_t done, uint64_t total) {
    bar->Update(task, done, total);
  });
}

CProgressBar::~CProgressBar() {
  SetProgressSink(nullptr);
  std::cout.flush();
  impl_->Finish();
  std::cout.rdbuf(impl_->Original());
}
