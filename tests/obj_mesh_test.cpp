// Reading OBJ meshes: what is kept, what is refused with one line naming the
// file and the line, and that the numbers read are the parser's own.

#include <gtest/gtest.h>

#include <tiny_obj_loader.h>

#include <string>
#include <vector>

#include "io/obj_mesh.h"
#include "support/command_runner.h"

namespace {

struct ObjRead {
  bool ok = false;
  myo_io::ObjMesh mesh;
  std::string error;
};

ObjRead Read(const myo_test::TemporaryDirectory& dir, const std::string& text) {
  dir.Write("mesh.obj", text);
  ObjRead read;
  read.ok = myo_io::ReadObjMesh(dir.File("mesh.obj"), read.mesh, read.error);
  return read;
}

const char* kSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

}  // namespace

TEST(ObjMeshTest, KeepsPolygonsOfAnySizeTextureCoordinatesAndRelativeIndices) {
  myo_test::TemporaryDirectory dir;
  // A ring of 300 points as one polygon: no corner is lost.
  std::string ring;
  std::string face = "f";
  for (int k = 0; k < 300; ++k) {
    ring += "v " + std::to_string(k) + " " + std::to_string(k % 7) + " 0\n";
    face += " " + std::to_string(k + 1);
  }
  ObjRead read = Read(dir, ring + face + "\n");
  ASSERT_TRUE(read.ok) << read.error;
  EXPECT_EQ(read.mesh.polygons.vertex_counts, (std::vector<int32_t>{300}));
  EXPECT_EQ(read.mesh.polygons.vertices.back(), 299);

  // Relative indices count back from the last vertex read; texture
  // coordinates are kept per corner; statements of no use here are ignored
  // and comments may follow anything.
  read = Read(dir, std::string("mtllib none.mtl\no square\n") + kSquare +
                       "vt 0 0\nvt 1 0\nvt 1 1\nvn 0 0 1\ng top\nusemtl skin\ns 1\n"
                       "f -4/1 -3/2 -2/3 # a comment\nf 1 3 4\r\nl 1 2\n");
  ASSERT_TRUE(read.ok) << read.error;
  EXPECT_EQ(read.mesh.polygons.vertices, (std::vector<int32_t>{0, 1, 2, 0, 2, 3}));
  EXPECT_EQ(read.mesh.uv_indices, (std::vector<int32_t>{0, 1, 2, -1, -1, -1}));
  EXPECT_EQ(read.mesh.uvs, (std::vector<float>{0, 0, 1, 0, 1, 1}));
}

TEST(ObjMeshTest, RefusesWhatItCannotReadWholeNamingTheLine) {
  myo_test::TemporaryDirectory dir;
  const std::string path = dir.File("mesh.obj");
  struct Case {
    std::string text;
    std::string message;
  };
  const std::vector<Case> cases = {
      {std::string(kSquare) + "f 1 2\n", ": line 5: a face needs at least 3 corners; it has 2"},
      {"v 1 nan 0\n", ": line 1: coordinate \"nan\" is not a number"},
      {"v 1 2\n", ": line 1: a vertex needs 3 coordinates (x y z, optionally w, or x y z r g b); it has 2"},
      {"v 1e39 0 0\n", ": line 1: coordinate \"1e39\" is outside the range of a 32-bit float"},
      {std::string(kSquare) + "f 1 2 0\n",
       ": line 5: face corner \"0\": vertex index \"0\" is not a whole number other than 0"},
      {std::string(kSquare) + "f 1 2 -5\n",
       ": line 5: face corner \"-5\": relative vertex index -5 reaches before the first of the 4 read so far"},
      {std::string(kSquare) + "f 1/ 2 3\n", ": line 5: face corner \"1/\" is not of the form v, v/t, v//n or v/t/n"},
      {std::string(kSquare) + "f 1 2 9\n", ": line 5: vertex index 9 is out of range (the file has 4)"},
      {std::string(kSquare) + "vn 0 0 1\nf 1//1 2//1 3//2\n", ": a face names normal 2 (the file has 1)"},
      {"v 0 0 0\n\x01garbage\n", ": line 2: \"\\x01garbage\" is not an OBJ statement"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    myo_io::ObjMesh mesh;
    mesh.polygons.points = {7.0f, 7.0f, 7.0f};
    dir.Write("mesh.obj", c.text);
    std::string error;
    EXPECT_FALSE(myo_io::ReadObjMesh(path, mesh, error));
    EXPECT_EQ(error, path + c.message);
    EXPECT_EQ(mesh.polygons.points, (std::vector<float>{7.0f, 7.0f, 7.0f}));  // untouched
  }
}

TEST(ObjMeshTest, MaterialFilesAreNeverOpened) {
  myo_test::TemporaryDirectory dir;
  // A material library that names a device which never ends: reading it
  // would run out of memory.
  const ObjRead read = Read(dir, std::string("mtllib ../../../../../../../../../dev/zero\n") + kSquare + "f 1 2 3\n");
  ASSERT_TRUE(read.ok) << read.error;
  EXPECT_EQ(read.mesh.polygons.vertex_counts, (std::vector<int32_t>{3}));
}

// The points are those of the parser's own number reading, bit for bit.
TEST(ObjMeshTest, PointsAreTheParsersOwnNumbers) {
  myo_test::TemporaryDirectory dir;
  const std::string text =
      "v 0.1 -2.5e-3 1234567.891\nv 3.40282346e38 -1.17549435e-38 .5\nv 5. 0.30000000000000004 -0\n"
      "vt 0.333333333 0.999999999\nf 1/1 2/1 3/1\n";
  const ObjRead read = Read(dir, text);
  ASSERT_TRUE(read.ok) << read.error;
  tinyobj::ObjReader reference;
  ASSERT_TRUE(reference.ParseFromString(text, ""));
  EXPECT_EQ(read.mesh.polygons.points, reference.GetAttrib().vertices);
  EXPECT_EQ(read.mesh.uvs, reference.GetAttrib().texcoords);
}
