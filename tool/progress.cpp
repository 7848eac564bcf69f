#include "tool/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace xfm::tool {

Progress::Progress(std::string title, double total) : title_(std::move(title)), total_(total), shown_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  if (drawn_) std::fputs("\r\033[K", stderr);
}

void Progress::to(double done) {
  done_ = done;
  if (!shown_ || Clock::now() < next_) return;
  next_ = Clock::now() + std::chrono::milliseconds(100);
  drawn_ = true;
  draw();
}

void Progress::draw() const {
  if (total_ <= 0) {
    std::fprintf(stderr, "\r\033[K%s  %.0f", title_.c_str(), done_);
    return;
  }
  constexpr int kWidth = 30;
  const double share = std::clamp(done_ / total_, 0.0, 1.0);
  const int full = static_cast<int>(share * kWidth);
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  const int left = share > 0 ? static_cast<int>(seconds / share * (1 - share) + 0.5) : 0;
  std::fprintf(stderr, "\r\033[K%s [%s%s] %3.0f %%, %d:%02d left", title_.c_str(), std::string(full, '#').c_str(),
               std::string(kWidth - full, '.').c_str(), 100 * share, left / 60, left % 60);
}

}  // namespace xfm::tool
