/// Speed of the demosaic engine, one thread, on a picture of 12 megapixels. memcpy of as many bytes
/// as the picture has, and OpenCV's demosaics if it is there, stand beside ours for comparison.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "vorbayer.h"

#if KORVEX2_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr int kRows = 3000;
constexpr int kCols = 4000;
constexpr std::size_t kPixels = std::size_t{kRows} * kCols;

// Smooth areas, edges and noise, so that methods that decide have something to decide.
std::vector<std::uint16_t> Scene() {
  std::vector<std::uint16_t> samples(kPixels);
  std::mt19937 random(1);
  for (int y = 0; y < kRows; ++y) {
    for (int x = 0; x < kCols; ++x) {
      const int stripes = ((x / 37 + y / 53) & 1) * 20000;
      const auto value = stripes + x * 5 + y * 7 + static_cast<int>(random() & 2047);
      samples[static_cast<std::size_t>(y) * kCols + static_cast<std::size_t>(x)] =
          static_cast<std::uint16_t>(value);
    }
  }
  return samples;
}

// The scene as bytes of RAW8 or RAW16.
std::vector<unsigned char> MosaicBytes(int bytesPerSample) {
  std::vector<unsigned char> bytes;
  bytes.reserve(kPixels * static_cast<std::size_t>(bytesPerSample));
  for (const std::uint16_t sample : Scene()) {
    if (bytesPerSample == 2) bytes.push_back(static_cast<unsigned char>(sample & 0xFF));
    bytes.push_back(static_cast<unsigned char>(sample >> 8));
  }
  return bytes;
}

struct Job {
  const char* name;
  BayerPixelFormat input;
  int inputBytes;
  BayerPixelFormat output;
  int outputBytes;
};

constexpr Job kJobs[] = {
    {"RAW8_BGR8", BAYER_PIXEL_FORMAT_RAW8, 1, BAYER_PIXEL_FORMAT_BGR8, 3},
    {"RAW16_BGR16", BAYER_PIXEL_FORMAT_RAW16, 2, BAYER_PIXEL_FORMAT_BGR16, 6},
    {"RAW16_BGR8", BAYER_PIXEL_FORMAT_RAW16, 2, BAYER_PIXEL_FORMAT_BGR8, 3},
};

struct MethodName {
  const char* name;
  BayerMethod method;
};

constexpr MethodName kMethods[] = {
    {"nearest_neighbor", BAYER_METHOD_NEAREST_NEIGHBOR},
    {"edge_sensing", BAYER_METHOD_EDGE_SENSING},
    {"hq_linear", BAYER_METHOD_HQLINEAR},
    {"directional_filter", BAYER_METHOD_DIRECTIONAL_FILTER},
    {"weighted_directional_filter", BAYER_METHOD_WEIGHTED_DIRECTIONAL_FILTER},
    {"rigorous", BAYER_METHOD_RIGOROUS},
};

void Report(benchmark::State& state) {
  const double pixels = static_cast<double>(kPixels) * static_cast<double>(state.iterations());
  state.counters["Mpx/s"] = benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsRate);
}

void Copy(benchmark::State& state, const Job& job) {
  const std::size_t bytes = kPixels * static_cast<std::size_t>(job.outputBytes);
  const std::vector<unsigned char> from(bytes, 1);
  std::vector<unsigned char> to(bytes);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::ClobberMemory();
  }
  Report(state);
}

void Demosaic(benchmark::State& state, const Job& job, BayerMethod method) {
  const std::vector<unsigned char> in = MosaicBytes(job.inputBytes);
  std::vector<unsigned char> out(kPixels * static_cast<std::size_t>(job.outputBytes));
  for (auto _ : state) {
    const BayerError error = bayerToColor(job.input, in.data(), kRows, kCols, job.output,
                                          out.data(), method, BAYER_PATTERN_RGGB);
    if (error != beOK) state.SkipWithError("bayerToColor failed");
    benchmark::ClobberMemory();
  }
  Report(state);
}

#if KORVEX2_BENCH_OPENCV
void OpenCv(benchmark::State& state, const Job& job, int code) {
  std::vector<unsigned char> in = MosaicBytes(job.inputBytes);
  const int depth = job.inputBytes == 1 ? CV_8U : CV_16U;
  const cv::Mat from(kRows, kCols, CV_MAKETYPE(depth, 1), in.data());
  cv::Mat to(kRows, kCols, CV_MAKETYPE(depth, 3));
  cv::setNumThreads(1);
  for (auto _ : state) {
    cv::cvtColor(from, to, code);
    benchmark::ClobberMemory();
  }
  Report(state);
}
#endif

template <typename... Arguments>
void Add(const std::string& name, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), arguments...)->Unit(benchmark::kMillisecond);
}

void AddAll() {
  for (const Job& job : kJobs) {
    const std::string suffix = std::string("/") + job.name;
    Add("memcpy" + suffix, Copy, job);
#if KORVEX2_BENCH_OPENCV
    // OpenCV names a pattern by the second row's second and third pixel. It cannot reduce depth.
    if (job.outputBytes == 3 * job.inputBytes) {
      Add("opencv_bilinear" + suffix, OpenCv, job, int{cv::COLOR_BayerBG2BGR});
      Add("opencv_edge_aware" + suffix, OpenCv, job, int{cv::COLOR_BayerBG2BGR_EA});
    }
#endif
    for (const MethodName& method : kMethods) {
      Add(method.name + suffix, Demosaic, job, method.method);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  AddAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
