// The page of `wayfence report`.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/wayfence/run_file.h"

namespace Wayfence {

/// A name that people choose the run by, and the run.
using TNamedRun = std::pair<std::string, TRunRecord>;

/// What the page shows, as JSON that may stand in a script element: it has no '<'. Times are whole
/// milliseconds, each the difference to the one before; pictures that are equal are kept once.
std::string RunsToJson(const std::vector<TNamedRun>& ARuns);

/// The whole page: HTML that loads nothing.
std::string MakeReportPage(const std::vector<TNamedRun>& ARuns);

/// The parts of the page that do not depend on runs.
extern const std::string_view ReportHtml;
extern const std::string_view ReportCss;
extern const std::string_view ReportScript;

}  // namespace Wayfence
