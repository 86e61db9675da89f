#include "maya/commands/myo_learn_muscle_patches_command.h"

#include <maya/MArgDatabase.h>
#include <maya/MColorArray.h>
#include <maya/MComputation.h>
#include <maya/MDagPath.h>
#include <maya/MFnMesh.h>
#include <maya/MGlobal.h>
#include <maya/MIntArray.h>
#include <maya/MItMeshVertex.h>
#include <maya/MObject.h>
#include <maya/MPoint.h>
#include <maya/MPointArray.h>
#include <maya/MSelectionList.h>
#include <maya/MString.h>

#include <string>
#include <vector>

#include "core/learning/learn_muscle_patches.h"
#include "core/log/logger.h"
#include "core/plugin/plugin_lifecycle.h"
#include "maya/plugin/maya_conversions.h"
#include "maya/plugin/node_helpers.h"

namespace {

constexpr char kOutputShort[] = "-o";
constexpr char kOutputLong[] = "-outputPath";
constexpr char kDrawShort[] = "-d";
constexpr char kDrawLong[] = "-drawMuscles";
constexpr char kCountShort[] = "-n";
constexpr char kCountLong[] = "-numMuscles";
constexpr char kNeutralShort[] = "-m";
constexpr char kNeutralLong[] = "-neutralMesh";
constexpr char kTargetsShort[] = "-t";
constexpr char kTargetsLong[] = "-targetMeshes";
constexpr char kMaskShort[] = "-v";
constexpr char kMaskLong[] = "-verticesMask";
constexpr char kIterationsShort[] = "-i";
constexpr char kIterationsLong[] = "-maxIterations";

// The mesh shape named `name`; false when it cannot be resolved.
bool MeshByName(const std::string& name, MDagPath& path) {
  MSelectionList list;
  if (!list.add(myo_maya::ToMString(name))) return false;
  if (!list.getDagPath(0, path)) return false;
  return static_cast<bool>(path.extendToShape());
}

// Maya's side of the learning: meshes by name, the progress bar of a session
// with an interface, the neutral mesh's colours.
class MayaLearnHost : public myo_core::LearnPatchesHost {
 public:
  bool UserInterface(bool& has_interface) override {
    MStatus status;
    const MGlobal::MMayaState state = MGlobal::mayaState(&status);
    if (!status) return false;
    has_interface = myo_core::HasUserInterface(static_cast<int32_t>(state));
    return true;
  }

  std::vector<float> NeutralPoints(const std::string& name) override {
    std::vector<float> points;
    if (!MeshByName(name, neutral_)) return points;
    MStatus status;
    MObject node = neutral_.node();
    MItMeshVertex vertex(node, &status);
    if (!status) return points;
    for (; !vertex.isDone(); vertex.next()) {
      const MPoint p = vertex.position(MSpace::kObject);
      const size_t at = 3 * static_cast<size_t>(vertex.index());
      if (points.size() < at + 3) points.resize(at + 3, 0.0f);
      points[at] = static_cast<float>(p.x);
      points[at + 1] = static_cast<float>(p.y);
      points[at + 2] = static_cast<float>(p.z);
    }
    return points;
  }

  bool TargetPoints(const std::string& name, std::vector<float>& points) override {
    MDagPath path;
    if (!MeshByName(name, path)) return false;
    MStatus status;
    MFnMesh mesh(path, &status);
    if (!status || mesh.numVertices() == 0) return false;
    MPointArray array;
    if (!mesh.getPoints(array, MSpace::kObject)) return false;
    points.resize(3 * array.length());
    for (unsigned i = 0; i < array.length(); ++i) {
      points[3 * i] = static_cast<float>(array[i].x);
      points[3 * i + 1] = static_cast<float>(array[i].y);
      points[3 * i + 2] = static_cast<float>(array[i].z);
    }
    return true;
  }

  void BeginProgress(int32_t count, const std::string& status) override {
    shown_ = true;
    myo_maya::BeginProgress(computation_, true, count, myo_maya::ToMString(status));
  }
  void AdvanceProgress(const std::string& status) override {
    myo_maya::AdvanceProgress(computation_, shown_);
    if (shown_) computation_.setProgressStatus(MString(myo_core::kLogCommonTag) + myo_maya::ToMString(status));
  }
  void EndProgress() override {
    if (shown_) computation_.setProgress(computation_.progressMax());
    myo_maya::EndProgress(computation_, shown_);
    shown_ = false;
  }

  void SetNeutralColors(const std::vector<float>& rgba) override {
    MStatus status;
    MFnMesh mesh(neutral_, &status);
    if (!status) return;
    const unsigned count = static_cast<unsigned>(rgba.size() / 4);
    MColorArray colors(count);
    MIntArray indices(count);
    for (unsigned i = 0; i < count; ++i) {
      colors.set(i, rgba[4 * i], rgba[4 * i + 1], rgba[4 * i + 2], rgba[4 * i + 3]);
      indices[i] = static_cast<int>(i);
    }
    mesh.setVertexColors(colors, indices);
  }

 private:
  MDagPath neutral_;
  MComputation computation_;
  bool shown_ = false;
};

}  // namespace

void* MyoLearnMusclePatchesCommand::creator() { return new MyoLearnMusclePatchesCommand(); }

MSyntax MyoLearnMusclePatchesCommand::newSyntax() {
  MSyntax syntax;
  syntax.addFlag(kOutputShort, kOutputLong, MSyntax::kString);
  syntax.addFlag(kDrawShort, kDrawLong, MSyntax::kBoolean);
  syntax.addFlag(kCountShort, kCountLong, MSyntax::kLong);
  syntax.addFlag(kNeutralShort, kNeutralLong, MSyntax::kString);
  syntax.addFlag(kTargetsShort, kTargetsLong, MSyntax::kString);
  syntax.makeFlagMultiUse(kTargetsShort);
  syntax.addFlag(kMaskShort, kMaskLong, MSyntax::kLong);
  syntax.makeFlagMultiUse(kMaskShort);
  syntax.addFlag(kIterationsShort, kIterationsLong, MSyntax::kLong);
  syntax.enableQuery(false);
  syntax.enableEdit(false);
  return syntax;
}

MStatus MyoLearnMusclePatchesCommand::doIt(const MArgList& args) {
  MStatus status;
  MArgDatabase database(syntax(), args, &status);
  if (!status) return status;

  myo_core::LearnPatchesRequest request;
  MString text;
  if (database.isFlagSet(kOutputShort) && database.getFlagArgument(kOutputShort, 0, text))
    request.output_path = myo_maya::ToStdString(text);
  bool draw = false;
  if (database.isFlagSet(kDrawShort) && database.getFlagArgument(kDrawShort, 0, draw)) request.draw = draw;
  int value = 0;
  if (database.isFlagSet(kCountShort) && database.getFlagArgument(kCountShort, 0, value)) request.patch_count = value;
  if (database.isFlagSet(kNeutralShort) && database.getFlagArgument(kNeutralShort, 0, text))
    request.neutral_name = myo_maya::ToStdString(text);
  if (database.isFlagSet(kIterationsShort) && database.getFlagArgument(kIterationsShort, 0, value)) {
    request.max_iterations_set = true;
    request.max_iterations = value;
  }
  // Every use of a multi-use flag may carry a list.
  for (unsigned use = 0; use < database.numberOfFlagUses(kTargetsShort); ++use) {
    MArgList list;
    if (!database.getFlagArgumentList(kTargetsShort, use, list)) continue;
    for (unsigned i = 0; i < list.length(); ++i) request.targets.push_back(myo_maya::ToStdString(list.asString(i)));
  }
  for (unsigned use = 0; use < database.numberOfFlagUses(kMaskShort); ++use) {
    MArgList list;
    if (!database.getFlagArgumentList(kMaskShort, use, list)) continue;
    for (unsigned i = 0; i < list.length(); ++i) request.vertices_mask.push_back(list.asInt(i));
  }

  MayaLearnHost host;
  const myo_core::LearnPatchesResult result = myo_core::LearnMusclePatches(request, host);
  if (!result.ok) {
    myo_core::LogError(result.error);
    return MS::kFailure;
  }
  return MS::kSuccess;
}
