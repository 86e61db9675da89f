// libFuzzer target of the OBJ mesh reader: the input is an OBJ file.
//
// Beyond the sanitizers' checks: no exception escapes; a refused file leaves
// the mesh as it was and one line of message; an accepted mesh holds
// together (FindMeshFault).

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "fuzz/reader_checks.h"
#include "io/obj_mesh.h"

namespace {

constexpr const char* kReader = "myo_io::ReadObjMesh";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const myo_fuzz::PrivateDirectory directory("obj");
  static const std::string path = directory.File("mesh.obj");
  myo_fuzz::WriteInput(path, data, size);

  // A mesh that is already there must survive a refusal.
  myo_io::ObjMesh mesh;
  mesh.polygons.points = {1.0f, 2.0f, 3.0f};
  mesh.polygons.vertex_counts = {1};
  mesh.polygons.vertices = {0};
  std::string error;
  const std::optional<bool> read = myo_fuzz::CallReader(kReader, [&] { return myo_io::ReadObjMesh(path, mesh, error); });
  if (!read) return 0;
  if (!*read) {
    myo_fuzz::CheckRefusalMessage(kReader, error);
    if (mesh.polygons.points != std::vector<float>{1.0f, 2.0f, 3.0f} || mesh.polygons.vertices.size() != 1)
      myo_fuzz::Finding(kReader, "a refused file changed the mesh", error);
    return 0;
  }
  const myo_fuzz::Fault fault = myo_fuzz::FindMeshFault(mesh);
  if (fault.Found()) myo_fuzz::Finding(kReader, "accepted a mesh with " + fault.kind, fault.detail);
  return 0;
}
