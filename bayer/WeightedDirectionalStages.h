#pragma once

#include "Stages.h"

namespace Korvex2::Bayer {

/// The weighted directional filter as it runs; what the stages compute stands in
/// WeightedDirectional.cpp.
struct WeightedDirectionalStages {
  // clang-format off
  enum PlaneNumber {
    kMosaic,
    kAlong, kAcross,                // fourfold differences, along rows and along columns
    kChangesAlong, kChangesAcross,  // how much they change
    kSumsAlong, kThrees, kSumsAcross,  // the same over 3x3 places; over three rows
    kWeightsAlong, kWeightsAcross,
    kWest, kEast, kNorth, kSouth,   // fortyfold arms
    kOwn, kOpposite,                // green minus the colours, at red and blue
    kColour, kGreen,                // the sample and green, there too
  };

  static constexpr Plane kPlanes[] = {
      {kMosaic,        Elements::kSamples},
      {kAlong,         Elements::kSums},
      {kAcross,        Elements::kSums},
      {kChangesAlong,  Elements::kSums},
      {kChangesAcross, Elements::kSums},
      {kSumsAlong,     Elements::kSums},
      {kThrees,        Elements::kSums},
      {kSumsAcross,    Elements::kSums},
      {kWeightsAlong,  Elements::kHalves},
      {kWeightsAcross, Elements::kHalves},
      {kWest,          Elements::kSums},
      {kEast,          Elements::kSums},
      {kNorth,         Elements::kSums},
      {kSouth,         Elements::kSums},
      {kOwn,           Elements::kHalf},
      {kOpposite,      Elements::kHalf},
      {kColour,        Elements::kHalf},
      {kGreen,         Elements::kHalf},
  };

  enum StageNumber {
    kDifferAlong, kDifferAcross,
    kChangeAlong, kChangeAcross,
    kSumAlong, kSumThrees, kSumAcross,
    kWeigh,
    kReachAlong, kReachAcross,
    kBlendOwn, kBlendOpposite,
    kWritePixels,
  };

  static constexpr Stage kStages[] = {
      //                                                    rows    columns
      // stage         writes          reads                ^  v    <  >
      {kDifferAlong,  {kAlong},       {{kMosaic,           {0, 0,   2, 2}}}},
      {kDifferAcross, {kAcross},      {{kMosaic,           {2, 2,   0, 0}}}},
      {kChangeAlong,  {kChangesAlong},
                                      {{kAlong,            {0, 0,   2, 2}}}},
      {kChangeAcross, {kChangesAcross},
                                      {{kAcross,           {1, 1,   0, 0}}}},
      {kSumAlong,     {kSumsAlong},   {{kChangesAlong,     {1, 1,   0, 0}}}},
      {kSumThrees,    {kThrees},      {{kChangesAcross,    {1, 1,   0, 0}}}},
      {kSumAcross,    {kSumsAcross},  {{kThrees,           {0, 0,   1, 1}}}},
      {kWeigh,        {kWeightsAlong, kWeightsAcross},
                                      {{kSumsAlong,        {0, 0,   0, 0}},
                                       {kSumsAcross,       {0, 0,   0, 0}}}},
      {kReachAlong,   {kWest, kEast}, {{kAlong,            {0, 0,   2, 2}}}},
      {kReachAcross,  {kNorth, kSouth},
                                      {{kAcross,           {2, 2,   0, 0}}}},
      {kBlendOwn,     {kOwn, kColour, kGreen},
                                      {{kMosaic,           {0, 0,   0, 0}},
                                       {kNorth,            {0, 0,   0, 0}},
                                       {kSouth,            {0, 0,   0, 0}},
                                       {kWest,             {0, 0,   0, 0}},
                                       {kEast,             {0, 0,   0, 0}},
                                       {kWeightsAcross,    {1, 1,   0, 0}},
                                       {kWeightsAlong,     {0, 0,   1, 1}}}},
      {kBlendOpposite, {kOpposite},   {{kOwn,              {1, 1,   1, 1}},
                                       {kColour,           {1, 1,   1, 1}},
                                       {kGreen,            {1, 1,   1, 1}}}},
      {kWritePixels,  {},             {{kMosaic,           {0, 0,   0, 0}},
                                       {kOwn,              {1, 1,   1, 1}},
                                       {kOpposite,         {1, 1,   1, 1}},
                                       {kGreen,            {0, 0,   0, 0}},
                                       {kWeightsAcross,    {1, 1,   0, 0}},
                                       {kWeightsAlong,     {0, 0,   1, 1}}}},
  };
  // clang-format on

  static constexpr Plan kPlan{kPlanes, kStages};
};

}  // namespace Korvex2::Bayer
