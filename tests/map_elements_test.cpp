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

TEST(MapElementsTest, ReadsFillTheirBlockConvertingEachNumberType) {
  // Missing elements keep the default; element 7 lies beyond the count asked
  // for and is not read.
  FakeElements floats(ElementNumberKind::kFloat, {{0, 0.25}, {2, 0.75}, {7, 9.0}});
  std::vector<float> out = {5.0f};
  ReadNumericElements(floats, 0, 4, 4, 1.0f, out);
  EXPECT_EQ(out, (std::vector<float>{0.25f, 1.0f, 0.75f, 1.0f}));

  // An influence block fills only its range of the total.
  FakeElements integers(ElementNumberKind::kInteger, {{1, -2.0}});
  out = {9.0f, 9.0f, 9.0f};
  ReadNumericElements(integers, 3, 3, 9, 0.25f, out);
  EXPECT_EQ(out, (std::vector<float>{9.0f, 9.0f, 9.0f, 0.25f, -2.0f, 0.25f, 0.0f, 0.0f, 0.0f}));
  // A block that does not fit the total leaves the output as it is.
  std::vector<float> kept = {1.0f, 2.0f};
  ReadNumericElements(integers, 2, 3, 4, 0.25f, kept);
  EXPECT_EQ(kept, (std::vector<float>{1.0f, 2.0f}));

  const double wide = 0.1 + 1e-12;
  FakeElements doubles(ElementNumberKind::kDouble, {{1, wide}});
  ReadNumericElements(doubles, 0, 2, 2, 0.5f, out);
  EXPECT_EQ(out, (std::vector<float>{0.5f, static_cast<float>(wide)}));
}

TEST(MapElementsTest, WritesPickTheSetterOfTheTypeAndUnsupportedTypesOnlyLog) {
  FakeElements integers(ElementNumberKind::kInteger, {}), doubles(ElementNumberKind::kDouble, {});
  WriteNumericElements(integers, {2.9f, -1.5f});
  WriteNumericElements(doubles, {0.5f});
  EXPECT_EQ(integers.written_, (std::map<uint32_t, std::string>{{0, "int 2"}, {1, "int -1"}}));
  EXPECT_EQ(doubles.written_[0], "double 0.500000");

  myo_test::LogCapture log;
  FakeElements elements(ElementNumberKind::kUnsupported, {{0, 1.0}, {1, 1.0}});
  std::vector<float> out;
  ReadNumericElements(elements, 0, 2, 2, 0.3f, out);
  EXPECT_EQ(out, (std::vector<float>{0.3f, 0.3f}));
  WriteNumericElements(elements, {1.0f, 2.0f});
  EXPECT_TRUE(elements.written_.empty());
  EXPECT_EQ(log.lines(), (std::vector<std::string>(2, "[MyoForge][Debug] Data not accessible from array attribute as "
                                                      "the type is not supported")));
}
