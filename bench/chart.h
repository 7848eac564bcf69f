// Time by length, drawn from the plotted columns of reports: a panel a function. Times are on a logarithmic axis, lengths too where they go
// beyond 64.
#pragma once

#include <string>
#include <vector>

#include "bench/report.h"
#include "tool/picture.h"

namespace xfm::bench {

// The picture's bytes.
std::string draw_chart(const std::vector<Report>& reports, tool::PictureFormat format);

}  // namespace xfm::bench
