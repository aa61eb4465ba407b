#pragma once

/// Contact sheets: the same magnified detail of several pictures side by side.

#include <string>
#include <string_view>
#include <vector>

#include "Image.h"
#include "Quality.h"

namespace Korvex2::Tool {

/// A picture on the sheet, what stands below it on the left, and on the right.
struct Exhibit {
  const Image* picture;  ///< rgb8 or rgb16, all of the same size
  std::string name;
  std::string remark;
};

/// A sheet in rgb8, four exhibits a row, each showing the detail enlarged by whole pixels. The last
/// place shows where in the first picture the detail lies.
///
///     title
///     +----------+ +----------+ +----------+ +----------+
///     | original | | method   | | method   | | method   |
///     +----------+ +----------+ +----------+ +----------+
///     name  remark name  remark name  remark name  remark
///     ...                                     +----------+
///                                             | overview |
///                                             +----------+
Image DrawSheet(std::string_view title, const std::vector<Exhibit>& exhibits, const Area& detail);

}  // namespace Korvex2::Tool
