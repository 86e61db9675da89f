// The full attribute lists of the muscle, ribbon muscle and skin deformers, as
// their documentation gives them: names, short names, types, defaults, limits,
// flags that Maya needs and the order of creation.

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include <set>

#include "core/muscle/muscle_attributes.h"
#include "core/muscle/muscle_frame.h"
#include "core/skin/skin_attributes.h"
#include "core/skin/skin_frame.h"

using namespace myo_core;

namespace {

using T = AttributeType;
constexpr double kNone = NAN;

struct Row {
  const char* long_name;
  const char* short_name;
  AttributeType type;
  double value;  // kNone for attributes without a number default
  double min = kNone;
  double max = kNone;
  double soft_min = kNone;
  double soft_max = kNone;
};

void ExpectLimit(const std::optional<double>& actual, double expected, const char* what, const char* name) {
  if (std::isnan(expected)) {
    EXPECT_FALSE(actual.has_value()) << name << " has an unexpected " << what;
  } else {
    ASSERT_TRUE(actual.has_value()) << name << " lacks its " << what;
    EXPECT_DOUBLE_EQ(*actual, expected) << name << " " << what;
  }
}

void ExpectTable(const AttributeTable& table, const std::vector<Row>& rows) {
  ASSERT_EQ(table.size(), rows.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    const Row& row = rows[i];
    const AttributeInfo& info = table[i];
    SCOPED_TRACE(row.long_name);
    EXPECT_EQ(info.long_name, row.long_name) << "at position " << i;
    EXPECT_EQ(info.short_name, row.short_name);
    EXPECT_EQ(static_cast<int>(info.type), static_cast<int>(row.type));
    if (!std::isnan(row.value)) {
      EXPECT_DOUBLE_EQ(info.Default(), row.value);
    }
    ExpectLimit(info.min, row.min, "min", row.long_name);
    ExpectLimit(info.max, row.max, "max", row.long_name);
    ExpectLimit(info.soft_min, row.soft_min, "soft min", row.long_name);
    ExpectLimit(info.soft_max, row.soft_max, "soft max", row.long_name);
  }
}

// The shared head of the three tables, up to "stretchingMultiplier", with the
// node's own rows inserted after "density".
std::vector<Row> SolverHead(double iterations, double material, double density, double space_scale_mode,
                            const std::vector<Row>& after_density) {
  std::vector<Row> rows = {
      {"enable", "e", T::kBool, 1},
      {"iterations", "it", T::kInt, iterations, 1, kNone, kNone, 10},
      {"material", "mat", T::kEnum, material},
      {"stiffnessMultiplier", "sm", T::kFloat, 1, 0, kNone, kNone, 2},
      {"pointMassMode", "pmm", T::kEnum, 1},
      {"density", "d", T::kFloat, density, 0.000001, kNone, 0.001, 1000000},
  };
  rows.insert(rows.end(), after_density.begin(), after_density.end());
  const std::vector<Row> scales = {
      {"timeScale", "ts", T::kFloat, 1, 0.001, kNone, kNone, 10},
      {"spaceScale", "ss", T::kFloat, 1, 0.001, kNone, kNone, 100},
      {"spaceScaleMode", "ssm", T::kEnum, space_scale_mode},
      {"gravity", "g", T::kFloat, 0, 0, kNone, kNone, 100},
      {"gravityDirection", "gd", T::kCompound, kNone},
      {"gravityDirectionX", "gx", T::kFloat, 0},
      {"gravityDirectionY", "gy", T::kFloat, -1},
      {"gravityDirectionZ", "gz", T::kFloat, 0},
      {"useCustomStiffness", "ucs", T::kBool, 0},
      {"stiffness", "s", T::kFloat, 100000, 0, kNone, kNone, 1e12},
      {"overrideShapePreservationStiffness", "osps", T::kBool, 0},
      {"stiffnessShapePreservation", "ssp", T::kFloat, 1000, 0, kNone, kNone, 1e12},
      {"globalMassMultiplier", "gmm", T::kFloat, 1, 0.000001, kNone, 0.001, 10},
      {"globalDampingMultiplier", "gdm", T::kFloat, 0.75, 0, kNone, kNone, 1},
      {"inertiaDamper", "idmp", T::kFloat, 0, 0, 1},
      {"restLengthMultiplier", "rlm", T::kFloat, 1, 0, kNone, kNone, 2},
      {"compressionMultiplier", "cm", T::kFloat, 1, 0, kNone, kNone, 2},
      {"stretchingMultiplier", "stretm", T::kFloat, 1, 0, kNone, kNone, 2},
  };
  rows.insert(rows.end(), scales.begin(), scales.end());
  return rows;
}

std::vector<Row> DebugColorRows() {
  return {
      {"debug", "db", T::kBool, 0},
      {"debugColorRed", "dbcr", T::kFloat, 0},
      {"debugColorGreen", "dbcg", T::kFloat, 0},
      {"debugColorBlue", "dbcb", T::kFloat, 0},
      {"debugColor", "dbc", T::kColor, 1},
      {"debugWidth", "dw", T::kFloat, 3, 0, kNone, kNone, 10},
  };
}

std::vector<Row> MuscleRows(bool with_volume) {
  std::vector<Row> own = {
      {"activation", "a", T::kFloat, 0, 0, 1},
      {"restActivation", "ra", T::kFloat, 0, 0, 0.999},
  };
  if (with_volume) {
    own.push_back({"volumePreservation", "vp", T::kFloat, 1, 0, 1});
    own.push_back({"volumeRatio", "vr", T::kFloat, 1, 0, kNone, kNone, 2});
  }
  std::vector<Row> rows = SolverHead(10, 1, 1060, 1, own);
  const std::vector<Row> rest = {
      {"maxSlidingDistanceMultiplier", "msdm", T::kFloat, 1, 0, 1},
      {"maxSlidingDistanceMultiplierList", "msdml", T::kCompound, kNone},
      {"maxSlidingDistance", "msld", T::kFloat, 0, 0, kNone, kNone, 10},
      {"attenuationVelocityFactor", "avf", T::kFloat, 1, 0, 1},
      {"slidingConstraintsMode", "scm", T::kEnum, 0},
      {"targetWorldMesh", "tgwm", T::kMesh, kNone},
      {"targetWorldMatrix", "tgwx", T::kMatrix, kNone},
      {"attachmentToGeoConstraints", "agc", T::kFloat, 0, 0, 1},
      {"slideOnGeometryConstraints", "sgc", T::kFloat, 0, 0, 1},
      {"targets", "tg", T::kCompound, kNone},
      {"hardAttachments", "ha", T::kBool, 1},
      {"prerollStartTime", "pst", T::kTime, 0},
      {"startTime", "st", T::kTime, 0},
      {"currentTime", "t", T::kTime, 0},
      {"globalDamping", "gdmp", T::kFloat, 1, 0, 1},
      {"globalDampingList", "gdmpl", T::kCompound, kNone},
      {"attachmentMatrix", "attm", T::kMatrix, kNone},
      {"attachmentConstraints", "attc", T::kFloat, 0},
      {"attachmentConstraintsList", "attcl", T::kCompound, kNone},
      {"tendons", "tn", T::kFloat, 0, 0, 1},
      {"tendonsList", "tnl", T::kCompound, kNone},
      {"fibers", "fb", T::kCompound, kNone},
      {"fibersX", "fbx", T::kFloat, 0},
      {"fibersY", "fby", T::kFloat, 1},
      {"fibersZ", "fbz", T::kFloat, 0},
      {"fibersList", "fbl", T::kCompound, kNone},
      {"compressionResistance", "cr", T::kFloat, 1, 0, 1},
      {"compressionResistanceList", "crl", T::kCompound, kNone},
      {"stretchingResistance", "sr", T::kFloat, 1, 0, 1},
      {"stretchingResistanceList", "srl", T::kCompound, kNone},
      {"shapePreservation", "sp", T::kFloat, 0, 0, 1},
      {"shapePreservationList", "spl", T::kCompound, kNone},
      {"mass", "m", T::kFloat, 1, 0.000001, kNone, 0.001, 10},
      {"massList", "ml", T::kCompound, kNone},
      {"attenuationMatrix", "am", T::kMatrix, kNone},
      {"currentInfluence", "ci", T::kInt, 0, -1},
      {"slideOnSegmentRootMatrix", "ssrm", T::kMatrix, kNone},
      {"slideOnSegmentTipMatrix", "sstm", T::kMatrix, kNone},
      {"slideOnSegmentConstraints", "ssc", T::kFloat, 0, 0, 1},
      {"slideOnSegmentConstraintsList", "sscl", T::kCompound, kNone},
  };
  rows.insert(rows.end(), rest.begin(), rest.end());
  const std::vector<Row> debug = DebugColorRows();
  rows.insert(rows.end(), debug.begin(), debug.end());
  rows.push_back({"debugFeature", "dbgf", T::kEnum, 4});
  rows.push_back({"debugFibersScale", "dfs", T::kFloat, 1, 0.001, kNone, kNone, 10});
  return rows;
}

std::vector<Row> SkinRows() {
  std::vector<Row> rows = SolverHead(3, 4, 1100, 2, {});
  const std::vector<Row> rest = {
      {"attenuationVelocityFactor", "avf", T::kFloat, 1, 0, 1},
      {"slidingConstraintsMode", "scm", T::kEnum, 0},
      {"prerollStartTime", "pst", T::kTime, 0},
      {"startTime", "st", T::kTime, 0},
      {"currentTime", "t", T::kTime, 0},
      {"globalDamping", "gdmp", T::kFloat, 1, 0, 1},
      {"globalDampingList", "gdmpl", T::kCompound, kNone},
      {"maxSlidingDistanceMultiplier", "msdm", T::kFloat, 1, 0, 1},
      {"maxSlidingDistanceMultiplierList", "msdml", T::kCompound, kNone},
      {"maxSlidingDistance", "msld", T::kFloat, 0, 0, kNone, kNone, 10},
      {"referenceMesh", "ref", T::kMesh, kNone},
      {"referenceMatrix", "refm", T::kFloatMatrix, kNone},
      {"softConstraints", "sfc", T::kFloat, 0},
      {"softConstraintsList", "sfcl", T::kCompound, kNone},
      {"hardConstraints", "hc", T::kFloat, 1},
      {"hardConstraintsList", "hcl", T::kCompound, kNone},
      {"slideConstraints", "slc", T::kFloat, 0},
      {"slideConstraintsList", "slcl", T::kCompound, kNone},
      {"compressionResistance", "cr", T::kFloat, 1, 0, 1},
      {"compressionResistanceList", "crl", T::kCompound, kNone},
      {"stretchingResistance", "sr", T::kFloat, 1, 0, 1},
      {"stretchingResistanceList", "srl", T::kCompound, kNone},
      {"shapePreservation", "sp", T::kFloat, 0, 0, 1},
      {"shapePreservationList", "spl", T::kCompound, kNone},
      {"currentInfluence", "ci", T::kInt, 0, -1},
      {"mass", "m", T::kFloat, 1, 0.000001, kNone, 0.001, 10},
      {"massList", "ml", T::kCompound, kNone},
      {"attenuationMatrix", "am", T::kFloatMatrix, kNone},
  };
  rows.insert(rows.end(), rest.begin(), rest.end());
  const std::vector<Row> debug = DebugColorRows();
  rows.insert(rows.end(), debug.begin(), debug.end());
  rows.push_back({"debugFeature", "dbgf", T::kEnum, 3});
  return rows;
}

// Maya needs a compound's children to exist when the compound is made and
// adds them with it, so every child must be declared once, in one compound
// only, and each list must name its element among its children.
void ExpectCompoundsAreWellFormed(const AttributeTable& table) {
  std::vector<std::string> seen_children;
  for (const AttributeInfo& info : table) {
    if (info.type != T::kCompound && info.type != T::kColor) {
      EXPECT_TRUE(info.children.empty()) << info.long_name;
      continue;
    }
    EXPECT_FALSE(info.children.empty()) << info.long_name;
    for (const std::string& child : info.children) {
      const AttributeInfo* found = FindAttribute(table, child);
      ASSERT_NE(found, nullptr) << child;
      if (info.type == T::kColor) {
        EXPECT_EQ(static_cast<int>(found->type), static_cast<int>(T::kFloat)) << child;
      }
      for (const std::string& other : seen_children) EXPECT_NE(other, child) << child << " has two parents";
      seen_children.push_back(child);
    }
    if (!info.array_of.empty()) {
      EXPECT_TRUE(info.Has(kArray)) << info.long_name;
      ASSERT_EQ(info.children.size(), 1u) << info.long_name;
      EXPECT_EQ(info.children.front(), info.array_of);
    }
  }
}

}  // namespace

TEST(DeformerAttributeTablesTest, MuscleTableIsTheDocumentedList) {
  ExpectTable(MuscleAttributes(), MuscleRows(true));
}

TEST(DeformerAttributeTablesTest, RibbonMuscleTableIsTheMuscleListWithoutVolume) {
  ExpectTable(RibbonMuscleAttributes(), MuscleRows(false));
}

TEST(DeformerAttributeTablesTest, SkinTableIsTheDocumentedList) {
  ExpectTable(SkinAttributes(), SkinRows());
}

TEST(DeformerAttributeTablesTest, CompoundsCanBeBuiltFromTheirChildrenAndNamesAreUnique) {
  for (const AttributeTable* table : {&MuscleAttributes(), &RibbonMuscleAttributes(), &SkinAttributes()}) {
    ExpectCompoundsAreWellFormed(*table);
    std::set<std::string> names;
    for (const AttributeInfo& info : *table) {
      EXPECT_TRUE(names.insert(info.long_name).second) << info.long_name;
      EXPECT_TRUE(names.insert(info.short_name).second) << info.short_name;
    }
  }
  EXPECT_EQ(FindAttribute(MuscleAttributes(), "stretm")->long_name, "stretchingMultiplier");
  EXPECT_EQ(FindAttribute(MuscleAttributes(), "nothing"), nullptr);
}

// The frame values a node starts from must be the defaults a new node shows.
TEST(DeformerAttributeTablesTest, FrameValueDefaultsAreTheTableDefaults) {
  const MuscleFrameValues muscle;
  auto m = [](const char* name) { return FindAttribute(MuscleAttributes(), name)->Default(); };
  EXPECT_EQ(muscle.enable, m("enable") != 0.0);
  EXPECT_EQ(muscle.iterations, m("iterations"));
  EXPECT_EQ(muscle.material, m("material"));
  EXPECT_EQ(muscle.point_mass_mode, m("pointMassMode"));
  EXPECT_FLOAT_EQ(muscle.density, m("density"));
  EXPECT_EQ(muscle.space_scale_mode, m("spaceScaleMode"));
  EXPECT_EQ(muscle.gravity_direction[1], m("gravityDirectionY"));
  EXPECT_EQ(muscle.stiffness, m("stiffness"));
  EXPECT_EQ(muscle.stiffness_shape_preservation, m("stiffnessShapePreservation"));
  EXPECT_FLOAT_EQ(muscle.global_damping_multiplier, m("globalDampingMultiplier"));
  EXPECT_EQ(muscle.attenuation_velocity_factor, m("attenuationVelocityFactor"));
  EXPECT_EQ(muscle.hard_attachments, m("hardAttachments") != 0.0);
  EXPECT_EQ(muscle.debug_fibers_scale, m("debugFibersScale"));
  EXPECT_EQ(muscle.max_sliding_distance, m("maxSlidingDistance"));

  const SkinFrameValues skin;
  auto s = [](const char* name) { return FindAttribute(SkinAttributes(), name)->Default(); };
  EXPECT_EQ(skin.iterations, s("iterations"));
  EXPECT_EQ(skin.material, s("material"));
  EXPECT_EQ(skin.space_scale_mode, s("spaceScaleMode"));
  EXPECT_FLOAT_EQ(skin.density, s("density"));
}

TEST(DeformerAttributeTablesTest, FlagsAndEnumFieldsTheHostNeeds) {
  std::set<std::string> affecting;
  for (const AttributeInfo& info : MuscleAttributes())
    if (info.Has(kAffectsOutput)) affecting.insert(info.long_name);
  EXPECT_EQ(affecting, (std::set<std::string>{
                           "currentTime", "tendons", "tendonsList", "fibers", "fibersList", "attachmentConstraints",
                           "attachmentConstraintsList", "slideOnSegmentConstraints", "slideOnSegmentConstraintsList",
                           "attachmentToGeoConstraints", "slideOnGeometryConstraints", "targets", "enable", "debug",
                           "debugFeature", "debugWidth", "debugColor", "debugFibersScale"}));
  const AttributeInfo* material = FindAttribute(MuscleAttributes(), "mat");
  ASSERT_EQ(material->fields.size(), 7u);
  EXPECT_EQ(material->fields[1].name, "Muscle");
  const AttributeInfo* muscle_feature = FindAttribute(MuscleAttributes(), "debugFeature");
  ASSERT_EQ(muscle_feature->fields.size(), 6u);
  EXPECT_EQ(muscle_feature->fields[4].name, "Slide On Segment");
  EXPECT_EQ(muscle_feature->fields[4].value, 9);
  EXPECT_TRUE(FindAttribute(MuscleAttributes(), "dbc")->Has(kUsedAsColor));

  for (const AttributeTable* table : {&MuscleAttributes(), &SkinAttributes()}) {
    for (const AttributeInfo& info : *table) {
      if (!info.array_of.empty()) {
        EXPECT_TRUE(FindAttribute(*table, info.array_of)->Has(kArray)) << info.long_name;
      }
    }
    for (const char* name : {"attenuationMatrix"}) {
      const AttributeInfo* matrix = FindAttribute(*table, name);
      EXPECT_TRUE(matrix->Has(kStorable));
      EXPECT_EQ(matrix->disconnect_behavior, 1);
    }
    const AttributeInfo* influence = FindAttribute(*table, "currentInfluence");
    EXPECT_TRUE(influence->Has(kHidden));
    EXPECT_EQ(influence->disconnect_behavior, 1);
  }
  const AttributeTable& skin = SkinAttributes();
  for (const char* name : {"currentTime", "referenceMesh", "referenceMatrix", "enable", "hardConstraints",
                           "slideConstraints", "softConstraints", "debug", "debugFeature", "debugWidth",
                           "debugColor"})
    EXPECT_TRUE(FindAttribute(skin, name)->Has(kAffectsOutput)) << name;
  int skin_affecting = 0;
  for (const AttributeInfo& info : skin) skin_affecting += info.Has(kAffectsOutput) ? 1 : 0;
  EXPECT_EQ(skin_affecting, 11);
  const AttributeInfo* feature = FindAttribute(skin, "debugFeature");
  ASSERT_EQ(feature->fields.size(), 5u);
  EXPECT_EQ(feature->fields[3].name, "Sliding Surface On Target");
  EXPECT_EQ(feature->fields[3].value, 10);
  EXPECT_EQ(feature->fields.back().name, "Soft Constraints");
  EXPECT_EQ(FindAttribute(skin, "dbc")->defaults, (std::vector<double>{1.0, 0.0, 0.0}));
}
