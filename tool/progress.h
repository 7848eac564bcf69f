// A bar on standard error while something lasts; nothing where that is no terminal.
#pragma once

#include <chrono>
#include <string>

namespace xfm::tool {

class Progress {
 public:
  // A total of 0 is unknown: the bar then tells how far it has come.
  Progress(std::string title, double total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void advance(double by = 1) { to(done_ + by); }
  void to(double done);

 private:
  using Clock = std::chrono::steady_clock;
  void draw() const;

  std::string title_;
  double total_, done_ = 0;
  bool shown_, drawn_ = false;
  Clock::time_point start_ = Clock::now(), next_ = start_ + std::chrono::milliseconds(300);
};

}  // namespace xfm::tool
