// The colours the weights display node puts on its mesh: which maps colour,
// which leave the colours alone, and which fail with which message.

#include <gtest/gtest.h>

#include <vector>

#include "core/paint/weights_display_colors.h"

using namespace myo_core;

namespace {

const std::vector<float> kUntouched = {9.0f};  // marks colours that were not set

TEST(WeightsDisplayColors, MapsThatCannotColourLeaveTheColoursAloneAndErrorsNameTheFault) {
  std::vector<float> rgba = kUntouched;
  // A display node no paint run has filled (influence -1), 10 values on 4
  // vertices (no whole number of blocks) and an empty map: no colours, no message.
  EXPECT_EQ(WeightsDisplayColors({0.1f, 0.2f, 0.3f, 0.4f}, 4, -1, false, rgba), WeightsDisplayOutcome::kNoColors);
  EXPECT_EQ(WeightsDisplayColors(std::vector<float>(10, 0.5f), 4, 0, false, rgba), WeightsDisplayOutcome::kNoColors);
  EXPECT_EQ(WeightsDisplayColors({}, 4, 0, false, rgba), WeightsDisplayOutcome::kNoColors);
  EXPECT_FALSE(IsDisplayError(WeightsDisplayOutcome::kNoColors));
  // Influence 2 of a map of two blocks of 4.
  const WeightsDisplayOutcome past_end = WeightsDisplayColors(std::vector<float>(8, 0.5f), 4, 2, false, rgba);
  EXPECT_TRUE(IsDisplayError(past_end));
  EXPECT_EQ(WeightsDisplayMessage(past_end),
            "The offset computed in the display node caused an out of range exception for the displayed weights.");
  // No vertices fails before fibers or the map are looked at.
  const WeightsDisplayOutcome empty = WeightsDisplayColors({0.5f}, 0, 0, true, rgba);
  EXPECT_EQ(WeightsDisplayMessage(empty), "The number of vertices to display colors has to be greater than 0.");
  EXPECT_EQ(rgba, kUntouched);
}

TEST(WeightsDisplayColors, GreyBlockOfTheInfluenceAndBlackFibers) {
  std::vector<float> rgba;
  const std::vector<float> two_blocks = {0.0f, 0.1f, 0.2f, 0.3f, 1.0f, 0.75f, 0.5f, 0.25f};
  ASSERT_EQ(WeightsDisplayColors(two_blocks, 4, 1, false, rgba), WeightsDisplayOutcome::kGrey);
  EXPECT_EQ(rgba, std::vector<float>({1, 1, 1, 1, 0.75f, 0.75f, 0.75f, 1, 0.5f, 0.5f, 0.5f, 1, 0.25f, 0.25f, 0.25f, 1}));
  // The last block exactly fits.
  EXPECT_EQ(WeightsDisplayColors(two_blocks, 2, 3, false, rgba), WeightsDisplayOutcome::kGrey);
  EXPECT_EQ(rgba[0], 0.5f);

  // Fibers are black whatever the map and influence say.
  ASSERT_EQ(WeightsDisplayColors(std::vector<float>(10, 0.7f), 3, -1, true, rgba), WeightsDisplayOutcome::kFibers);
  EXPECT_EQ(rgba, std::vector<float>({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1}));
}

}  // namespace
