// Time by length, drawn from the plotted columns of reports: a panel a function, both axes logarithmic.
#pragma once

#include <string>
#include <vector>

#include "bench/report.h"
#include "tool/picture.h"

namespace xfm::bench {

// The picture's bytes.
std::string draw_chart(const std::vector<Report>& reports, tool::PictureFormat format);

}  // namespace xfm::bench
