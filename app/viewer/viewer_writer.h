#pragma once
// viewer.html: one self-contained page that plays a run in a browser without
// a server. It holds three.js (read from the system's libjs-three at write
// time), the meshes of the scene (every deformer's output and every mesh of
// the file, each with its world matrix per frame), the per-point channels
// the run produced (painted maps, a shape's activation, an edge evaluator's
// compression; the page derives speed from the positions), the debug lines
// of nodes whose "debug" is on, and the page's own script.
//
// The page is written while the run plays: each frame's data go to the
// temporary file as soon as the frame is done, so a long run of a big mesh
// holds no more than one frame of it in memory. The file appears on Commit.

#include <memory>
#include <string>
#include <vector>

#include "app/run/node_runner.h"
#include "app/scene/scene.h"
#include "io/atomic_file.h"

namespace myo_app {

// The three.js file the page embeds: $MYO_THREE_JS when set, else the
// minified build of Debian's libjs-three, else its plain build. Empty when
// none is a readable file.
std::string FindThreeJs();

// How far a page has come: the bytes of its temporary file and its frames.
struct ViewerProgress {
  uint64_t bytes = 0;
  std::size_t frames = 0;
};

class ViewerWriter {
 public:

  // Reads three.js and starts the page at `path`. False with one line
  // telling why (three.js missing and how to install it, or the file that
  // cannot be written); the run goes on without a page then. A resumable
  // page (a run with checkpoints) keeps its temporary file for a run that
  // goes on from a checkpoint, which passes the progress saved with it.
  bool Open(const std::string& path, const Scene& scene, std::string& reason, bool resumable = false,
            ViewerProgress from = {});
  ViewerProgress progress() const { return {file_.size(), frames_}; }
  // Hands the frames written so far to the system (before a checkpoint).
  bool Flush(std::string& error) { return file_.Flush(error); }
  // The data of a written frame: every object's matrix and points, the
  // channels and debug lines of this frame.
  bool AddFrame(double frame, const std::vector<std::unique_ptr<NodeRunner>>& runners, std::string& error);
  // Ends the page with the scene's description and the script, and puts it
  // in place.
  bool Commit(std::string& error);

 private:
  // What the page shows as one mesh.
  struct Object {
    std::string name;
    std::string type;                    // node type, or "mesh"
    const SceneNode* node = nullptr;     // a deformer, or null for a mesh of the file
    const SceneMesh* mesh = nullptr;     // its topology: the mesh, or the deformer's base mesh
    bool animated = false;               // a mesh placed or carried by a transform
  };

  Matrix4d ObjectMatrix(const Object& object, double frame) const;
  int ObjectIndex(const std::string& name) const;
  std::string SceneDescription() const;

  const Scene* scene_ = nullptr;
  std::vector<Object> objects_;
  myo_io::AtomicFile file_;
  std::size_t frames_ = 0;
};

}  // namespace myo_app
