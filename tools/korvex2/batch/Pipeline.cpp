#include "batch/Pipeline.h"

#include <fmt/format.h>
#include <tbb/global_control.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <new>
#include <utility>

#include "terminal/Report.h"

namespace Korvex2::Tool {
namespace {

std::uint64_t BytesOf(const Image& image) {
  return GroupedSize(*FindPixelFormat(image.GetPixelFormat()),
                     std::uint64_t{image.GetRows()} * image.GetCols());
}

bool IsStream(const FramePlace& place) {
  return IsStandardStream(place.path) && place.isPart;
}

}  // namespace

Pipeline::Pipeline(const FrameList& frames, const FrameLayout& layout, const BatchOptions& options,
                   const FrameWork& work, Outputs& outputs)
    : m_frames(frames),
      m_layout(layout),
      m_options(options),
      m_work(work),
      m_outputs(outputs),
      m_progress(options.progress, frames.count()) {}

Tally Pipeline::Run() {
  m_outputs.Begin();
  const tbb::global_control threads(tbb::global_control::max_allowed_parallelism, m_options.jobs);
  tbb::task_arena arena(static_cast<int>(m_options.jobs));
  arena.execute([this] { RunStages(); });
  m_progress.Finish();
  Conclude();
  return m_progress.tally();
}

void Pipeline::RunStages() {
  const auto read = [this](tbb::flow_control& control) {
    FramePointer frame = m_stopped ? nullptr : Next();
    if (frame == nullptr) {
      control.stop();
    }
    return frame;
  };
  const auto convert = [this](FramePointer frame) {
    Try(*frame, [&] { Convert(*frame); });
    return frame;
  };
  const auto write = [this](const FramePointer& frame) { Try(*frame, [&] { Write(*frame); }); };

  using tbb::filter_mode;
  tbb::parallel_pipeline(
      std::size_t{kFramesPerJob} * m_options.jobs,
      tbb::make_filter<void, FramePointer>(filter_mode::serial_in_order, read) &
          tbb::make_filter<FramePointer, FramePointer>(filter_mode::parallel, convert) &
          tbb::make_filter<FramePointer, void>(
              m_outputs.TakesTurns() ? filter_mode::serial_in_order : filter_mode::parallel,
              write));
}

Pipeline::FramePointer Pipeline::Next() {
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
    m_outputs.Name(*frame);
    more = Read(*frame);
  });
  if (!more) {
    return nullptr;
  }
  ++m_next;
  return frame;
}

// False: standard input has no more frames.
bool Pipeline::Read(Frame& frame) {
  if (IsStream(frame.place)) {
    return ReadStream(frame);
  }
  if (!m_outputs.MayBeDone(frame)) {
    frame.Open(m_options.shape);
  }
  return true;
}

bool Pipeline::ReadStream(Frame& frame) {
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

void Pipeline::Convert(Frame& frame) {
  if (m_outputs.IsDone(frame)) {
    frame.ended = true;
    m_progress.Skipped();
    return;
  }
  const InputFile& file = frame.Open(m_options.shape);
  const std::uint64_t size = file.size();
  frame.result = m_work.convert(file, ContainerOf(frame.place.path));
  frame.file.reset();
  m_bytes += size;
}

void Pipeline::Write(Frame& frame) {
  m_outputs.Write(frame);
  frame.ended = true;
  m_progress.Converted(m_bytes.exchange(0) + BytesOf(*frame.result));
  frame.result.reset();
}

// One frame's failure is no other's, unless it is fatal.
template <typename Step>
void Pipeline::Try(Frame& frame, Step step) {
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

void Pipeline::Fail(Frame& frame, const std::string& reason) {
  const std::string& label = frame.place.label;
  Report(reason.find(label) == std::string::npos ? fmt::format("{}: {}", label, reason) : reason);
  frame.ended = true;
  frame.result.reset();
  m_progress.Failed();
  m_stopped = m_stopped || m_options.failFast;
}

// Said once, when the frames that are on their way have come to rest.
void Pipeline::End(const std::string& reason) {
  const std::lock_guard lock(m_fatalMutex);
  if (!m_isFatal) {
    m_fatal = reason;
  }
  m_isFatal = m_stopped = true;
}

void Pipeline::Conclude() {
  if (m_isFatal) {
    throw Failure("{}", m_fatal);
  }
  m_outputs.Finish(!m_wasCut && m_progress.tally().failed == 0 && m_next != 0);
  if (m_wasCut) {
    const std::string begun =
        fmt::format("{} frames{}", m_next,
                    m_frames.count() ? fmt::format(" of {}", *m_frames.count()) : std::string());
    m_interrupt.End([&] { Report(m_outputs.AfterInterrupt(begun, m_next)); });
  }
}

}  // namespace Korvex2::Tool
