// How array elements of any numeric type become the floats of a map.

#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "core/plugin/map_elements.h"
#include "support/log_capture.h"

using namespace myo_core;

namespace {

// A sparse array of one numeric type: elements present by index.
class FakeElements : public NumericElementSource, public NumericElementSink {
 public:
  FakeElements(ElementNumberKind kind, std::map<uint32_t, double> values) : kind_(kind), values_(std::move(values)) {}

  bool JumpTo(uint32_t i) override {
    current_ = i;
    return values_.count(i) != 0;
  }
  ElementNumberKind Kind() override { return kind_; }
  int64_t AsInteger() override { return static_cast<int64_t>(values_.at(current_)); }
  float AsFloat() override { return static_cast<float>(values_.at(current_)); }
  double AsDouble() override { return values_.at(current_); }

  void SetInteger(uint32_t i, int32_t value) override { written_[i] = "int " + std::to_string(value); }
  void SetFloat(uint32_t i, float value) override { written_[i] = "float " + std::to_string(value); }
  void SetDouble(uint32_t i, double value) override { written_[i] = "double " + std::to_string(value); }

  std::map<uint32_t, std::string> written_;

 private:
  ElementNumberKind kind_;
  std::map<uint32_t, double> values_;
  uint32_t current_ = 0;
};

}  // namespace

TEST(MapElementsTest, MissingElementsKeepTheDefault) {
  FakeElements elements(ElementNumberKind::kFloat, {{0, 0.25}, {2, 0.75}, {7, 9.0}});
  std::vector<float> out = {5.0f};
  ReadNumericElements(elements, 0, 4, 4, 1.0f, out);
  // Element 7 lies beyond the count asked for and is not read.
  EXPECT_EQ(out, (std::vector<float>{0.25f, 1.0f, 0.75f, 1.0f}));
}

TEST(MapElementsTest, IntegersAreConvertedAndDoublesNarrowed) {
  FakeElements integers(ElementNumberKind::kInteger, {{0, 3.0}, {1, -2.0}});
  std::vector<float> out;
  ReadNumericElements(integers, 0, 2, 2, 0.5f, out);
  EXPECT_EQ(out, (std::vector<float>{3.0f, -2.0f}));

  const double wide = 0.1 + 1e-12;
  FakeElements doubles(ElementNumberKind::kDouble, {{1, wide}});
  ReadNumericElements(doubles, 0, 2, 2, 0.5f, out);
  EXPECT_EQ(out, (std::vector<float>{0.5f, static_cast<float>(wide)}));
}

TEST(MapElementsTest, AnInfluenceBlockFillsOnlyItsRange) {
  FakeElements elements(ElementNumberKind::kFloat, {{1, 0.5}});
  std::vector<float> out = {9.0f, 9.0f, 9.0f};
  ReadNumericElements(elements, 3, 3, 9, 0.25f, out);
  EXPECT_EQ(out, (std::vector<float>{9.0f, 9.0f, 9.0f, 0.25f, 0.5f, 0.25f, 0.0f, 0.0f, 0.0f}));

  // A block that does not fit the total leaves the output as it is.
  std::vector<float> kept = {1.0f, 2.0f};
  ReadNumericElements(elements, 2, 3, 4, 0.25f, kept);
  EXPECT_EQ(kept, (std::vector<float>{1.0f, 2.0f}));
}

TEST(MapElementsTest, UnsupportedTypesLogAndKeepTheDefaults) {
  myo_test::LogCapture log;
  FakeElements elements(ElementNumberKind::kUnsupported, {{0, 1.0}, {1, 1.0}});
  std::vector<float> out;
  ReadNumericElements(elements, 0, 2, 2, 0.3f, out);
  EXPECT_EQ(out, (std::vector<float>{0.3f, 0.3f}));
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "[MyoForge][Debug] Data not accessible from array attribute as the type is not "
                             "supported"}));

  log.Clear();
  WriteNumericElements(elements, {1.0f, 2.0f});
  EXPECT_TRUE(elements.written_.empty());
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(MapElementsTest, WritesPickTheSetterOfTheType) {
  FakeElements integers(ElementNumberKind::kInteger, {});
  WriteNumericElements(integers, {2.9f, -1.5f});
  EXPECT_EQ(integers.written_[0], "int 2");
  EXPECT_EQ(integers.written_[1], "int -1");
  FakeElements doubles(ElementNumberKind::kDouble, {});
  WriteNumericElements(doubles, {0.5f});
  EXPECT_EQ(doubles.written_[0], "double 0.500000");
  FakeElements floats(ElementNumberKind::kFloat, {});
  WriteNumericElements(floats, {0.25f});
  EXPECT_EQ(floats.written_[0], "float 0.250000");
}
