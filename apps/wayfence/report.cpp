// wayfence report: one page of one or several runs.
#include <fmt/format.h>

#include <filesystem>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/report_page.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;

namespace {

TRunRecord ReadWithWarning(const std::string& AFile) {
  TRunRecord Result = ReadRun(AFile);
  if (Result.TornLine > 0)
    Say(
        fmt::format("{}:{}: the last line is cut short and passed over: the run was "
                    "interrupted",
                    AFile,
                    Result.TornLine));
  return Result;
}

}  // namespace

int RunReport(const TReportArguments& AArguments) {
  namespace fs = std::filesystem;
  CheckOutputs({AArguments.File}, AArguments.RunFiles);
  CheckOverwrite({AArguments.File}, AArguments.Overwrite);
  std::vector<TNamedRun> Runs;
  for (const std::string& File : AArguments.RunFiles)
    Runs.emplace_back(fs::path(File).stem().string(), ReadWithWarning(File));
  ReplaceFile(AArguments.File, MakeReportPage(Runs));
  fmt::print(stderr, "wrote {}\n", AArguments.File);
  return ExitDone;
}

}  // namespace Wayfence
