#include "CommandLine.h"

#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "Korvex2Version.h"
#include "cli/Parser.h"
#include "commands/Commands.h"
#include "terminal/Failure.h"
#include "terminal/Report.h"

namespace Korvex2::Tool {
namespace {

constexpr const char* kExamples = R"(Examples:
  korvex2 chart chart.png
      draw the test chart
  korvex2 convert photo.png photo.pgm --to mono8
      colour to grey
  korvex2 convert frame.raw frame.png --from raw8 --width 640 --height 480 --tile rggb --to bgru
      demosaic a headerless frame
  korvex2 convert photo.png photo.raw --to yuv422
      to a packing that only a headerless file holds
  korvex2 convert capture.dng photo.png --to rgb8
      demosaic a camera's raw file
  korvex2 convert captures 'out/{name}.png' --to rgb8
      all pictures of a folder
  korvex2 demosaic-compare photo.png --out sheet.png
      measure and show the demosaic methods
  korvex2 diff expected.png found.png
      how far two pictures are apart, and where
  korvex2 guess mystery.bin --sheet sheet.png
      find out what a headerless file is
  korvex2 routes --from raw12 --to mono16
      the kernels behind a conversion
  korvex2 bench --from yuv422
      measure conversions on this machine

Exit codes: 0 done, 1 failed, 2 the command line is wrong; of diff: 0 the same, 1 different,
2 trouble. What cannot be made leaves no output file; a file that is made stays, even if stdout
does not take the line that says so and the exit code is 1.)";

int Run(int argc, char** argv) {
  Globals globals;
  Program program{
      .name = "korvex2",
      .help = "Converts machine-vision frames between pixel formats, exactly.",
      .version = fmt::format("korvex2 {}", GetVersion()),
      .options = {{"-q,--quiet", &globals.quiet, kFlag, "Say nothing unless something fails"}},
      .commands = {},
      .notes = kExamples,
  };
  program.commands = {
      ConvertCommand(globals),
      ChartCommand(globals),
      MosaicCommand(globals),
      DemosaicCompareCommand(globals),
      BenchCommand(globals),
      GuessCommand(globals),
      DiffCommand(globals),
      FormatsCommand(),
      RoutesCommand(),
      InfoCommand(),
      CompletionsCommand(program),
      ManCommand(program),
  };

  const Command* const command = Parse(program, argc, argv);
  const int result = command == nullptr ? kDone : command->run();
  FlushStandardOutput();
  return result;
}

}  // namespace

void FlushStandardOutput() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    throw Failure("cannot write to standard output");
  }
}

int RunCommandLine(int argc, char** argv) noexcept {
  try {
    return Run(argc, argv);
  } catch (const UsageFailure& failure) {
    Report(failure.what());
    return kUsage;
  } catch (const std::bad_alloc&) {
    Report("out of memory");
  } catch (const std::exception& failure) {
    Report(failure.what());
  } catch (...) {
    Report("an unknown failure");
  }
  return kFailed;
}

}  // namespace Korvex2::Tool
