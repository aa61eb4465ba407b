#include "batch/Batch.h"

#include <tbb/global_control.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "batch/FileSet.h"
#include "batch/OutputFolders.h"
#include "io/File.h"
#include "io/Headerless.h"
#include "io/Temporary.h"
#include "terminal/Failure.h"
#include "terminal/Report.h"

namespace Korvex2::Tool {
namespace {

namespace fs = std::filesystem;

struct Frame {
  FramePlace place;
  std::string output;  // empty: the one file of all frames
  std::unique_ptr<InputFile> file;
  std::optional<Image> result;
  bool ended = false;  // failed, or was there already
};

using FramePointer = std::shared_ptr<Frame>;

std::uint64_t BytesOf(const Image& image) {
  return GroupedSize(*FindPixelFormat(image.GetPixelFormat()),
                  std::uint64_t{image.GetRows()} * image.GetCols());
}

// --- What is refused before any frame is touched -------------------------------------------------

void RequireNoInput(const FileSet& inputs, const FramePlace& place, const std::string& output) {
  if (inputs.Contains(output)) {
    throw UsageFailure(
        "{} would be written over the input {}; let the pattern lead to another folder",
        place.label, output);
  }
}

// Of outputs that cannot be the same no more than these are looked at before any is written, and
// each one again then: files of single pixels have names without end.
constexpr std::uint64_t kCheckedBeforehand = 1 << 14;

void RequireApart(const FrameList& frames, const OutputPattern& pattern, const FileSet& inputs) {
  if (!frames.count()) {
    if (!pattern.TellsFramesApart()) {
      throw UsageFailure("the frames of standard input would all get one name; write {{index:06}}");
    }
    return;
  }
  const bool unique =
      pattern.HasIndex() || (frames.files().size() == 1 && pattern.TellsFramesApart());
  std::unordered_map<std::string, std::uint64_t> outputs;
  for (std::uint64_t i = 0; i < *frames.count() && (!unique || i < kCheckedBeforehand); ++i) {
    const FramePlace place = frames[i];
    const std::string output = pattern.Fill(place);
    RequireNoInput(inputs, place, output);
    if (unique) {
      continue;
    }
    const auto [other, isNew] = outputs.emplace(output, i);
    if (!isNew) {
      throw UsageFailure("{} and {} would both be written to {}; put {{index:06}} into the pattern",
                         frames[other->second].label, place.label, output);
    }
  }
}

void RequireOneFileWillDo(const FrameList& frames, const BatchOptions& options) {
  if (options.resume) {
    throw UsageFailure("--resume looks for files of single frames; put {{index:06}} into {}",
                       options.output);
  }
  if (!ContainerOf(options.output).appends && frames.count() != 1 &&
      !IsStandardStream(options.output)) {
    throw UsageFailure(
        "{} inputs or frames do not fit into {}; put {{name}} or {{index:06}} into its name",
        frames.count() ? fmt::format("{}", *frames.count()) : "many", options.output);
  }
  for (const std::string& file : frames.files()) {
    if (!IsStandardStream(file) && Identity(file) == Identity(options.output)) {
      throw UsageFailure("{} is both input and output", file);
    }
  }
}

// A file of all frames gets its name only when none of them is missing.
bool NeedsAllFrames(const std::string& output) {
  return !OutputPattern::IsPattern(output) && !IsStandardStream(output);
}

std::string NotWritten(const std::string& output) {
  return output + " is not written, since frames would be missing; ";
}

// --- The run -------------------------------------------------------------------------------------

class Batch {
 public:
  Batch(const FrameList& frames, const FileSet& inputs, const FrameLayout& layout,
        const BatchOptions& options, const FrameWork& work)
      : m_frames(frames),
        m_inputs(inputs),
        m_layout(layout),
        m_options(options),
        m_work(work),
        m_progress(options.progress, frames.count()) {
    if (OutputPattern::IsPattern(options.output)) {
      m_pattern.emplace(options.output);
    } else {
      m_stream = std::make_unique<OutputFile>(options.output);
    }
  }

  Tally Run() {
    const auto writing = m_stream ? tbb::filter_mode::serial_in_order : tbb::filter_mode::parallel;
    const tbb::global_control threads(tbb::global_control::max_allowed_parallelism, m_options.jobs);
    tbb::task_arena arena(static_cast<int>(m_options.jobs));
    arena.execute([&] {
      tbb::parallel_pipeline(
          std::size_t{kFramesPerJob} * m_options.jobs,
          tbb::make_filter<void, FramePointer>(tbb::filter_mode::serial_in_order,
                                               [this](tbb::flow_control& control) {
                                                 FramePointer frame = m_stopped ? nullptr : Next();
                                                 if (frame == nullptr) {
                                                   control.stop();
                                                 }
                                                 return frame;
                                               }) &
              tbb::make_filter<FramePointer, FramePointer>(tbb::filter_mode::parallel,
                                                           [this](FramePointer frame) {
                                                             Try(*frame, [&] { Convert(*frame); });
                                                             return frame;
                                                           }) &
              tbb::make_filter<FramePointer, void>(writing, [this](const FramePointer& frame) {
                Try(*frame, [&] { Write(*frame); });
              }));
    });
    m_progress.Finish();
    Conclude();
    return m_progress.tally();
  }

 private:
  FramePointer Next() {
    if (m_frames.count() && m_next == *m_frames.count()) {
      return nullptr;
    }
    if (m_interrupt.WasInterrupted()) {
      m_wasCut = true;
      return nullptr;
    }
    auto frame = std::make_shared<Frame>();
    frame->place = m_frames[m_next];
    bool more = !IsStream(frame->place);  // nobody knows where a stream stands that failed
    Try(*frame, [&] {
      if (m_pattern) {
        frame->output = m_pattern->Fill(frame->place);
      }
      more = Read(*frame);
    });
    if (!more) {
      return nullptr;
    }
    ++m_next;
    return frame;
  }

  bool IsThere(const Frame& frame) const {
    std::error_code isNone;
    return m_options.resume && !frame.output.empty() && fs::exists(frame.output, isNone);
  }

  static bool IsStream(const FramePlace& place) {
    return IsStandardStream(place.path) && place.isPart;
  }

  // False: standard input has no more frames.
  bool Read(Frame& frame) {
    if (IsStream(frame.place)) {
      return ReadStream(frame);
    }
    if (!IsThere(frame)) {
      Open(frame);
    }
    return true;
  }

  void Open(Frame& frame) const {
    const FramePlace& place = frame.place;
    frame.file =
        place.isPart
            ? std::make_unique<InputFile>(place.path, place.begin, place.size, place.label)
            : std::make_unique<InputFile>(place.path, MostBytes(place.path, m_options.shape));
    (void)frame.file->Read();
  }

  bool ReadStream(Frame& frame) {
    const FramePlace& place = frame.place;
    for (constexpr std::uint64_t kStep = 1 << 20; m_position < place.begin;) {
      const Bytes passed = ReadStandardInput(std::min(kStep, place.begin - m_position));
      m_position += passed.size;
      if (passed.size == 0) {
        return false;
      }
    }
    Bytes pixels = ReadStandardInput(m_layout.pixelBytes);
    m_position += pixels.size;
    if (pixels.size == 0) {
      return false;
    }
    frame.file = std::make_unique<InputFile>(place.label, std::move(pixels));
    return true;
  }

  void Convert(Frame& frame) {
    if (IsThere(frame) && IsWhole(frame)) {
      m_folders.Prepare(frame.output);
      frame.ended = true;
      m_progress.Skipped();
      return;
    }
    if (frame.file == nullptr) {  // its output was there when the frame was to be read
      Open(frame);
    }
    const std::uint64_t size = frame.file->size();
    frame.result = m_work.convert(*frame.file, ContainerOf(frame.place.path));
    frame.file.reset();
    m_bytes += size;
  }

  // Files get their names when they are complete, so this guards against what others did to them.
  bool IsWhole(Frame& frame) const {
    const PixelFormatInfo& target = *FindPixelFormat(m_options.target);
    const Container& container = ContainerOf(frame.output);
    if (container.size != nullptr) {
      const FrameSize size = SizeOfResult(frame);
      std::error_code isGone;  // the answer is no file's size then
      return fs::file_size(frame.output, isGone) ==
             container.size(target, size.cols, size.rows, m_options.write);
    }
    try {
      InputShape shape;
      shape.format = &target;
      ReadImage(frame.output, shape);
      return true;
    } catch (const Failure&) {
      return false;
    }
  }

  FrameSize SizeOfResult(Frame& frame) const {
    const auto file = [&]() -> const InputFile& {
      if (frame.file == nullptr) {
        Open(frame);
      }
      return *frame.file;
    };
    return m_work.sizeOfResult(file, ContainerOf(frame.place.path));
  }

  void Write(Frame& frame) {
    const Image& image = *frame.result;
    m_stream ? Append(image) : WriteFile(image, frame);
    frame.ended = true;
    m_progress.Converted(m_bytes.exchange(0) + BytesOf(image));
    frame.result.reset();
  }

  void Append(const Image& image) {
    RequireSameShape(image);
    try {
      WriteImage(image, ContainerOf(m_options.output), *m_stream, m_options.write);
    } catch (const Failure& failure) {
      if (std::ferror(m_stream->stream()) != 0) {
        throw FatalFailure("{}", failure.what());
      }
      throw;
    }
  }

  void WriteFile(const Image& image, const Frame& frame) {
    const std::string& path = frame.output;
    RequireNoInput(m_inputs, frame.place, path);
    m_folders.Prepare(path);
    try {
      WriteImage(image, path, m_options.write);
    } catch (const FatalFailure& failure) {
      m_folders.Prepare(path);
      throw FatalFailure(
          "{}; others of the folder may be gone too, which the same command with --resume makes",
          failure.what());
    } catch (const Failure&) {
      m_folders.Prepare(path);
      throw;
    }
  }

  void RequireSameShape(const Image& image) {
    if (m_shape.first == 0) {
      m_shape = {image.GetCols(), image.GetRows()};
    }
    if (m_shape != std::pair(image.GetCols(), image.GetRows())) {
      throw Failure("{} x {} pixels cannot follow frames of {} x {} in {}", image.GetCols(),
                    image.GetRows(), m_shape.first, m_shape.second, m_options.output);
    }
  }

  // One frame's failure is no other's, unless it is fatal.
  template <typename Step>
  void Try(Frame& frame, Step step) {
    if (frame.ended || m_isFatal) {
      return;
    }
    try {
      step();
    } catch (const FatalFailure& failure) {
      End(failure.what());
    } catch (const std::bad_alloc&) {
      Fail(frame, "out of memory");
    } catch (const std::exception& failure) {
      Fail(frame, failure.what());
    }
  }

  void Fail(Frame& frame, const std::string& reason) {
    const std::string& label = frame.place.label;
    Report(reason.find(label) == std::string::npos ? fmt::format("{}: {}", label, reason) : reason);
    frame.ended = true;
    frame.result.reset();
    m_progress.Failed();
    m_stopped = m_stopped || m_options.failFast;
  }

  // Said once, when the frames that are on their way have come to rest.
  void End(const std::string& reason) {
    const std::lock_guard lock(m_fatalMutex);
    if (!m_isFatal) {
      m_fatal = reason;
    }
    m_isFatal = m_stopped = true;
  }

  void Conclude() {
    if (m_isFatal) {
      throw Failure("{}", m_fatal);
    }
    m_folders.RequireAll();
    const bool isWhole = !m_wasCut && m_progress.tally().failed == 0 && m_next != 0;
    if (m_stream && (isWhole || IsStandardStream(m_options.output))) {
      m_stream->Commit();
    }
    m_stream.reset();
    if (m_wasCut) {
      m_interrupt.End([this] { Report(HowToGoOn()); });
    }
  }

  std::string HowToGoOn() const {
    const std::string begun =
        fmt::format("{} frames{}", m_next,
                    m_frames.count() ? fmt::format(" of {}", *m_frames.count()) : std::string());
    if (NeedsAllFrames(m_options.output)) {
      return fmt::format(
          "stopped by SIGINT after {}; {}start again, or put {{index:06}} into its name, so that "
          "--resume can go on",
          begun, NotWritten(m_options.output));
    }
    const std::string done =
        fmt::format("stopped by SIGINT; the {} that were begun are finished", begun);
    return done + (m_pattern ? std::string("; the same command with --resume goes on")
                             : fmt::format("; go on with --skip {} and another output",
                                           m_layout.skip + m_next * m_layout.every));
  }

  const FrameList& m_frames;
  const FileSet& m_inputs;
  const FrameLayout& m_layout;
  const BatchOptions& m_options;
  const FrameWork& m_work;
  FinishWhenInterrupted m_interrupt;
  Progress m_progress;
  std::optional<OutputPattern> m_pattern;
  OutputFolders m_folders;                         // then
  std::unique_ptr<OutputFile> m_stream;            // else
  std::pair<unsigned, unsigned> m_shape = {0, 0};  // of its frames
  std::uint64_t m_next = 0;
  std::uint64_t m_position = 0;            // in standard input
  std::atomic<std::uint64_t> m_bytes = 0;  // read and not yet counted
  std::atomic<bool> m_stopped = false;
  bool m_wasCut = false;  // by an interrupt, before the last frame
  std::atomic<bool> m_isFatal = false;
  std::mutex m_fatalMutex;
  std::string m_fatal;  // what ended it all
};

void RequireNoFailure(const Tally& tally, const BatchOptions& options) {
  if (tally.failed == 0) {
    return;
  }
  const bool dropsOthers = NeedsAllFrames(options.output) && tally.converted != 0;
  throw Failure("{} of {} frames failed{}{}", tally.failed, tally.Ended(),
                options.failFast ? ", and --fail-fast left out what had not begun" : "",
                dropsOthers ? fmt::format("; {}put {{index:06}} into its name to keep the others",
                                          NotWritten(options.output))
                            : "");
}

}  // namespace

Tally RunBatch(const std::vector<std::string>& files, const FrameLayout& layout,
               const BatchOptions& options, const FrameWork& work) {
  const FrameList frames(files, layout);
  const FileSet inputs(files);
  if (OutputPattern::IsPattern(options.output)) {
    if (IsStandardStream(options.output)) {
      throw UsageFailure("standard output has no name to put {} into", options.output);
    }
    RequireApart(frames, OutputPattern(options.output), inputs);
  } else {
    RequireOneFileWillDo(frames, options);
  }
  if (frames.count() == 0U) {
    throw Failure("there is no frame to convert: --skip passes over all of them");
  }
  const Tally tally = Batch(frames, inputs, layout, options, work).Run();
  RequireNoFailure(tally, options);
  if (tally.Ended() == 0) {
    throw Failure("standard input held no frame");
  }
  return tally;
}

}  // namespace Korvex2::Tool
