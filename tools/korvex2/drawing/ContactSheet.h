#pragma once

/// Contact sheets: the same magnified detail of several pictures side by side, or whole pictures.

#include <string>
#include <string_view>
#include <vector>

#include "Image.h"
#include "analysis/Quality.h"

namespace Korvex2::Tool {

/// A picture on the sheet, what stands below it on the left, and on the right.
struct Exhibit {
  const Image* picture;  ///< rgb8 or rgb16
  std::string name;
  std::string remark;
};

/// A sheet in rgb8, four exhibits of the same size a row, each showing the detail enlarged by whole
/// pixels. The last place shows where in the first picture the detail lies.
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

/// A sheet in rgb8, three exhibits a row, each picture whole, made smaller or larger to fit and
/// brightened until the brightest hundredth of its samples is white. Sizes may differ.
Image DrawOverviews(std::string_view title, const std::vector<Exhibit>& exhibits);

}  // namespace Korvex2::Tool
