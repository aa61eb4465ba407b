#pragma once

/// Conversions with their outcomes, for tests that run many of them at once.

#include <functional>
#include <string>
#include <vector>

#include "Image.h"
#include "ImageConverterARMStub.h"

namespace Korvex2::Test {

/// A conversion, and what a single thread made of it.
struct Job {
  Image source;
  PixelFormat target = UNSPECIFIED_PIXEL_FORMAT;
  ErrorType answer = VORERROR_OK;
  ErrorType predicted = VORERROR_OK;  ///< what CheckConversion said of it
  Image picture;
};

std::string Describe(const Job& job);

/// A frame of random content, its size and tile drawn from the seed, and its conversion. Up to
/// 26 x 28 pixels, times the scale in both directions.
Job MakeJob(PixelFormat from, PixelFormat to, int method, unsigned seed, unsigned scale = 1);

/// All pairs, with all methods where the source is a mosaic; other frames for each seed.
std::vector<Job> AllJobs(unsigned seed, unsigned scale = 1);

/// Converts a job into a destination that is used again. Where no picture is made the last one
/// would stay, so there it is a new one.
Error Convert(ImageConverter& converter, const Job& job, Image& destination);

/// Whether a conversion came out as the job did: code, and for success every byte.
bool SameOutcome(const Job& job, const Error& error, const Image& picture);

/// Runs work(0) ... work(threads - 1), all at once.
void AtOnce(int threads, const std::function<void(int)>& work);

}  // namespace Korvex2::Test
