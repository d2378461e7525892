#include "apps/wayfence/report_page.h"

namespace Wayfence {
namespace {

/// Puts each part in the place that the template has for it, in one pass: what a part holds is
/// never taken for a place.
std::string Compose(std::string_view ATemplate,
                    const std::vector<std::pair<std::string_view, std::string_view>>& AParts) {
  std::string Result;
  for (const auto& [Mark, Part] : AParts) {
    const std::size_t At = ATemplate.find(Mark);
    Result += ATemplate.substr(0, At);
    Result += Part;
    ATemplate.remove_prefix(At + Mark.size());
  }
  Result += ATemplate;
  return Result;
}

}  // namespace

std::string MakeReportPage(const std::vector<TNamedRun>& ARuns) {
  return Compose(ReportHtml,
                 {{"{{page.css}}", ReportCss},
                  {"{{runs}}", RunsToJson(ARuns)},
                  {"{{page.js}}", ReportScript}});
}

}  // namespace Wayfence
