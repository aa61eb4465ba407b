#include "Peers.h"

namespace Korvex2::Bench {

std::span<const PeerLibrary> PeerLibraries() {
  static const std::vector<PeerLibrary> libraries = {
#if KORVEX2_BENCH_OPENCV
    OpenCv(),
#endif
#if KORVEX2_BENCH_LIBYUV
    LibYuv(),
#endif
#if KORVEX2_BENCH_SWSCALE
    SwScale(),
#endif
#if KORVEX2_BENCH_ZIMG
    Zimg(),
#endif
  };
  return libraries;
}

}  // namespace Korvex2::Bench
