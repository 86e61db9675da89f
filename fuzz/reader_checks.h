#pragma once
// What the fuzz targets check in a reader's answer beyond the sanitizers:
// whether an accepted mesh, map or scene is one the host can use, and
// whether a fuzzed scene names a file outside its own directory.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/scene/scene.h"
#include "io/obj_mesh.h"

namespace myo_fuzz {

// A fault in an accepted answer: `kind` names it without the input's
// particulars (findings of one kind count as one), `detail` gives them.
struct Fault {
  std::string kind;  // empty: no fault
  std::string detail;

  bool Found() const { return !kind.empty(); }
};

// An accepted mesh holds together: one vertex index per corner, every index
// in range, one texture index per corner or none, finite coordinates.
Fault FindMeshFault(const myo_io::ObjMesh& mesh);

// Accepted map values are finite floats.
Fault FindMapFault(const std::vector<float>& values);

// An accepted muscle patches file gives one id per vertex of the mesh it was
// read for and at least one fiber value, every one a finite float.
Fault FindPatchesFault(uint32_t expected_count, const std::vector<int32_t>& ids, const std::vector<float>& fibers);

// The vertex count a muscle patches file declares: its second
// whitespace-separated word when that is decimal digits (a "+" before them
// allowed) of a value up to `limit`; empty otherwise.
std::optional<uint32_t> DeclaredVertexCount(const uint8_t* data, std::size_t size, uint32_t limit);

// The runner can play an accepted scene: every node typed, on a base mesh,
// after the nodes whose output it reads, with maps of one finite value (or
// one per component) per point of that mesh.
Fault FindSceneFault(const myo_app::Scene& scene);

// True when a "file" anywhere in the JSON document is absolute or climbs
// with "..": the scene reader would open it outside the scene's directory.
// A document that does not parse names no file.
bool NamesOutsideFile(const uint8_t* data, std::size_t size);

}  // namespace myo_fuzz
