#include "io/obj_mesh.h"

#include <tiny_obj_loader.h>

#include <cmath>
#include <cstdio>
#include <set>
#include <sstream>

#include "io/file_text.h"
#include "io/number_text.h"

namespace myo_io {

namespace {

// Statements that carry nothing a polygon mesh reads here (normals, groups,
// smoothing, materials, lines, points, free-form geometry): accepted and
// left alone. Material files are never opened.
const std::set<std::string>& IgnoredStatements() {
  static const std::set<std::string> statements = {
      "vn",   "vp",    "o",     "g",    "s",    "usemtl",   "mtllib",   "l",          "p",
      "cstype", "deg", "bmat",  "step", "curv", "curv2",    "surf",     "parm",       "trim",
      "hole", "scrv",  "sp",    "end",  "con",  "mg",       "lod",      "usemap",     "maplib",
      "c_interp", "d_interp", "shadow_obj", "trace_obj", "bevel", "call", "csh"};
  return statements;
}

// One line of the file, split at blanks, with its number (from 1).
struct ObjLine {
  std::size_t number = 0;
  std::vector<std::string> words;
};

// Lines end at "\n", "\r\n" or a lone "\r", as the parser reads them.
// "#" starts a comment that runs to the end of the line.
std::vector<ObjLine> SplitLines(const std::string& text) {
  std::vector<ObjLine> lines;
  std::size_t number = 1;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    std::size_t end = text.find_first_of("\r\n", begin);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(begin, end - begin);
    const std::size_t hash = line.find('#');
    if (hash != std::string::npos) line.resize(hash);
    ObjLine item;
    item.number = number;
    std::istringstream words(line);
    for (std::string word; words >> word;) item.words.push_back(word);
    if (!item.words.empty()) lines.push_back(std::move(item));
    if (end == text.size()) break;
    begin = end + ((text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n') ? 2 : 1);
    ++number;
  }
  return lines;
}

class ObjFault {
 public:
  ObjFault(const std::string& path, std::size_t line) : prefix_(path + ": line " + std::to_string(line) + ": ") {}
  std::string operator()(const std::string& what) const { return prefix_ + what; }

 private:
  std::string prefix_;
};

// What the checks found: the counts of each kind of element, and for each
// vertex and texture coordinate the line it stands on.
struct ObjOutline {
  std::vector<std::size_t> vertex_lines;
  std::vector<std::size_t> uv_lines;
  std::size_t normals = 0;
  std::vector<std::size_t> face_lines;
  long highest_normal = 0;  // the highest absolute normal index of any face
};

bool CheckNumbers(const ObjLine& line, std::size_t first, const ObjFault& fault, std::string& error) {
  for (std::size_t k = first; k < line.words.size(); ++k) {
    double value = 0.0;
    if (!ParseFloatText(line.words[k], value)) {
      error = fault("coordinate " + Quoted(line.words[k]) + " " + FloatTextProblem(line.words[k]));
      return false;
    }
  }
  return true;
}

// One corner "v", "v/t", "v//n" or "v/t/n": whole numbers, none 0; a
// negative one counts back from the last element read so far. Vertex and
// texture indices must name an element of the file: relative ones are
// checked here, absolute ones against the whole file at the end.
bool CheckCorner(const std::string& corner, ObjOutline& outline, const ObjFault& fault, std::string& error) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (;;) {
    const std::size_t slash = corner.find('/', begin);
    parts.push_back(corner.substr(begin, slash == std::string::npos ? std::string::npos : slash - begin));
    if (slash == std::string::npos) break;
    begin = slash + 1;
  }
  const bool shape_ok = parts.size() <= 3 && !parts[0].empty() && !(parts.size() == 3 && parts[2].empty()) &&
                        !(parts.size() == 2 && parts[1].empty());
  if (!shape_ok) {
    error = fault("face corner " + Quoted(corner) + " is not of the form v, v/t, v//n or v/t/n");
    return false;
  }
  const char* names[3] = {"vertex", "texture coordinate", "normal"};
  const std::size_t counts[3] = {outline.vertex_lines.size(), outline.uv_lines.size(), outline.normals};
  for (std::size_t k = 0; k < parts.size(); ++k) {
    if (parts[k].empty()) continue;
    long index = 0;
    if (!ParseIntText(parts[k], index) || index == 0) {
      error = fault("face corner " + Quoted(corner) + ": " + names[k] + " index " + Quoted(parts[k]) +
                    " is not a whole number other than 0");
      return false;
    }
    if (index < 0 && static_cast<std::size_t>(-index) > counts[k]) {
      error = fault("face corner " + Quoted(corner) + ": relative " + names[k] + " index " + parts[k] +
                    " reaches before the first of the " + std::to_string(counts[k]) + " read so far");
      return false;
    }
    if (k == 2 && index > outline.highest_normal) outline.highest_normal = index;
  }
  return true;
}

// Checks every statement of the file before anything is kept: coordinates are
// decimal numbers within the float range, faces have three corners or more
// with valid indices, and every statement is one an OBJ file may hold.
bool CheckObjText(const std::string& path, const std::vector<ObjLine>& lines, ObjOutline& outline,
                  std::string& error) {
  for (const ObjLine& line : lines) {
    const ObjFault fault(path, line.number);
    const std::string& keyword = line.words[0];
    const std::size_t values = line.words.size() - 1;
    if (keyword == "v") {
      if (values != 3 && values != 4 && values != 6) {
        error = fault("a vertex needs 3 coordinates (x y z, optionally w, or x y z r g b); it has " +
                      std::to_string(values));
        return false;
      }
      if (!CheckNumbers(line, 1, fault, error)) return false;
      outline.vertex_lines.push_back(line.number);
    } else if (keyword == "vt") {
      if (values < 1 || values > 3) {
        error = fault("a texture coordinate needs 1 to 3 numbers; it has " + std::to_string(values));
        return false;
      }
      if (!CheckNumbers(line, 1, fault, error)) return false;
      outline.uv_lines.push_back(line.number);
    } else if (keyword == "f") {
      if (values < 3) {
        error = fault("a face needs at least 3 corners; it has " + std::to_string(values));
        return false;
      }
      for (std::size_t k = 1; k < line.words.size(); ++k)
        if (!CheckCorner(line.words[k], outline, fault, error)) return false;
      outline.face_lines.push_back(line.number);
    } else if (keyword == "vn") {
      ++outline.normals;
    } else if (IgnoredStatements().count(keyword) == 0) {
      error = fault(Quoted(keyword) + " is not an OBJ statement");
      return false;
    }
  }
  // Normals are not read, but a face must not name one the file lacks.
  if (outline.highest_normal > 0 && static_cast<std::size_t>(outline.highest_normal) > outline.normals) {
    error = path + ": a face names normal " + std::to_string(outline.highest_normal) + " (the file has " +
            std::to_string(outline.normals) + ")";
    return false;
  }
  return true;
}

// The mesh as the parser reads it from the checked text: coordinates parsed
// by the parser itself, faces of any number of corners.
struct ParsedObj {
  std::vector<float> points;
  std::vector<float> uvs;
  std::vector<int32_t> counts;
  std::vector<tinyobj::index_t> corners;  // raw indices: 1-based, or negative counting back
  std::vector<std::size_t> vertices_before;  // per face, vertices read before it
  std::vector<std::size_t> uvs_before;       // per face, texture coordinates read before it
};

// The checked vertices, texture coordinates and faces alone, one statement a
// line, words as they stand: all the parser is given, so that it reads
// exactly what was checked and opens no other file.
std::string CheckedText(const std::vector<ObjLine>& lines) {
  std::string text;
  for (const ObjLine& line : lines) {
    const std::string& keyword = line.words[0];
    if (keyword != "v" && keyword != "vt" && keyword != "f") continue;
    for (std::size_t k = 0; k < line.words.size(); ++k) text += (k == 0 ? "" : " ") + line.words[k];
    text += '\n';
  }
  return text;
}

void ParseObjText(const std::string& text, ParsedObj& parsed) {
  tinyobj::callback_t callback;
  callback.vertex_cb = [](void* data, tinyobj::real_t x, tinyobj::real_t y, tinyobj::real_t z, tinyobj::real_t) {
    auto* out = static_cast<ParsedObj*>(data);
    out->points.insert(out->points.end(), {x, y, z});
  };
  callback.texcoord_cb = [](void* data, tinyobj::real_t u, tinyobj::real_t v, tinyobj::real_t) {
    auto* out = static_cast<ParsedObj*>(data);
    out->uvs.insert(out->uvs.end(), {u, v});
  };
  callback.index_cb = [](void* data, tinyobj::index_t* indices, int count) {
    auto* out = static_cast<ParsedObj*>(data);
    out->counts.push_back(count);
    out->corners.insert(out->corners.end(), indices, indices + count);
    out->vertices_before.push_back(out->points.size() / 3);
    out->uvs_before.push_back(out->uvs.size() / 2);
  };
  std::istringstream in(text);
  std::string warning, parse_error;
  tinyobj::LoadObjWithCallback(in, callback, &parsed, nullptr, &warning, &parse_error);
}

// A raw index as a 0-based one; `before` elements were read before the face.
int64_t Resolve(int raw, std::size_t before) {
  return raw > 0 ? static_cast<int64_t>(raw) - 1 : static_cast<int64_t>(before) + raw;
}

std::string FaceError(const std::string& path, std::size_t line, const char* what, int64_t index, std::size_t count) {
  return path + ": line " + std::to_string(line) + ": " + what + " index " + std::to_string(index + 1) +
         " is out of range (the file has " + std::to_string(count) + ")";
}

}  // namespace

bool ReadObjMesh(const std::string& path, ObjMesh& mesh, std::string& error) {
  std::string text;
  if (!ReadFileText(path, text)) {
    error = path + ": cannot be read";
    return false;
  }
  const std::vector<ObjLine> lines = SplitLines(text);
  ObjOutline outline;
  if (!CheckObjText(path, lines, outline, error)) return false;

  ParsedObj parsed;
  ParseObjText(CheckedText(lines), parsed);
  if (parsed.points.size() != 3 * outline.vertex_lines.size() || parsed.uvs.size() != 2 * outline.uv_lines.size() ||
      parsed.counts.size() != outline.face_lines.size()) {
    error = path + ": the file could not be read consistently";
    return false;
  }
  for (std::size_t k = 0; k < parsed.points.size(); ++k)
    if (!std::isfinite(parsed.points[k])) {
      error = ObjFault(path, outline.vertex_lines[k / 3])("a coordinate is outside the range of a 32-bit float");
      return false;
    }
  for (std::size_t k = 0; k < parsed.uvs.size(); ++k)
    if (!std::isfinite(parsed.uvs[k])) {
      error = ObjFault(path, outline.uv_lines[k / 2])("a coordinate is outside the range of a 32-bit float");
      return false;
    }

  const std::size_t vertex_count = parsed.points.size() / 3;
  const std::size_t uv_count = parsed.uvs.size() / 2;
  ObjMesh result;
  result.polygons.points = std::move(parsed.points);
  bool any_uv = false;
  std::size_t next = 0;
  for (std::size_t face = 0; face < parsed.counts.size(); ++face) {
    const int32_t count = parsed.counts[face];
    result.polygons.vertex_counts.push_back(count);
    for (int32_t k = 0; k < count; ++k, ++next) {
      const tinyobj::index_t& corner = parsed.corners[next];
      const int64_t v = Resolve(corner.vertex_index, parsed.vertices_before[face]);
      if (v < 0 || static_cast<std::size_t>(v) >= vertex_count) {
        error = FaceError(path, outline.face_lines[face], "vertex", v, vertex_count);
        return false;
      }
      int64_t t = -1;
      if (corner.texcoord_index != 0) {
        t = Resolve(corner.texcoord_index, parsed.uvs_before[face]);
        if (t < 0 || static_cast<std::size_t>(t) >= uv_count) {
          error = FaceError(path, outline.face_lines[face], "texture coordinate", t, uv_count);
          return false;
        }
        any_uv = true;
      }
      result.polygons.vertices.push_back(static_cast<int32_t>(v));
      result.uv_indices.push_back(static_cast<int32_t>(t));
    }
  }
  if (any_uv) {
    result.uvs = std::move(parsed.uvs);
  } else {
    result.uv_indices.clear();
  }
  mesh = std::move(result);
  return true;
}

std::string ObjText(const ObjMesh& topology, const std::vector<float>& points, const std::string& comment) {
  std::string text;
  text.reserve(points.size() * 14 + topology.polygons.vertices.size() * 12);
  char line[128];
  if (!comment.empty()) text += "# " + comment + "\n";
  for (std::size_t i = 0; i + 2 < points.size(); i += 3) {
    std::snprintf(line, sizeof line, "v %.9g %.9g %.9g\n", points[i], points[i + 1], points[i + 2]);
    text += line;
  }
  for (std::size_t i = 0; i + 1 < topology.uvs.size(); i += 2) {
    std::snprintf(line, sizeof line, "vt %.9g %.9g\n", topology.uvs[i], topology.uvs[i + 1]);
    text += line;
  }
  std::size_t corner = 0;
  for (int32_t count : topology.polygons.vertex_counts) {
    bool with_uv = !topology.uv_indices.empty();
    for (int32_t k = 0; with_uv && k < count; ++k) with_uv = topology.uv_indices[corner + k] >= 0;
    text += 'f';
    for (int32_t k = 0; k < count; ++k, ++corner) {
      const int32_t v = topology.polygons.vertices[corner] + 1;
      if (with_uv) {
        std::snprintf(line, sizeof line, " %d/%d", v, topology.uv_indices[corner] + 1);
      } else {
        std::snprintf(line, sizeof line, " %d", v);
      }
      text += line;
    }
    text += '\n';
  }
  return text;
}

std::string ColoredObjText(const std::string& topology_text, const std::vector<float>& rgba) {
  std::string text;
  text.reserve(topology_text.size() + rgba.size() * 8);
  size_t vertex = 0, start = 0;
  char colour[96];
  while (start < topology_text.size()) {
    size_t end = topology_text.find('\n', start);
    if (end == std::string::npos) end = topology_text.size();
    text.append(topology_text, start, end - start);
    if (end - start > 2 && topology_text.compare(start, 2, "v ") == 0 && 4 * vertex + 2 < rgba.size()) {
      std::snprintf(colour, sizeof colour, " %.6g %.6g %.6g", static_cast<double>(rgba[4 * vertex]),
                    static_cast<double>(rgba[4 * vertex + 1]), static_cast<double>(rgba[4 * vertex + 2]));
      text += colour;
      ++vertex;
    }
    text += '\n';
    start = end + 1;
  }
  return text;
}

namespace {

// The vertices and line elements of `lines`, the first vertex numbered
// `first_vertex` (1-based).
void AppendLines(const std::vector<float>& lines, size_t first_vertex, std::string& text) {
  const size_t count = lines.size() / 6;
  text.reserve(text.size() + count * 80);
  char line[160];
  for (size_t k = 0; k < 2 * count; ++k) {
    const float* p = lines.data() + 3 * k;
    std::snprintf(line, sizeof line, "v %.9g %.9g %.9g\n", static_cast<double>(p[0]), static_cast<double>(p[1]),
                  static_cast<double>(p[2]));
    text += line;
  }
  for (size_t k = 0; k < count; ++k) {
    std::snprintf(line, sizeof line, "l %zu %zu\n", first_vertex + 2 * k, first_vertex + 2 * k + 1);
    text += line;
  }
}

}  // namespace

std::string ObjLinesText(const std::vector<float>& lines, const std::string& comment) {
  std::string text = "# " + comment + "\n";
  AppendLines(lines, 1, text);
  return text;
}

std::string ObjLineObjectsText(const std::vector<ObjLineObject>& objects, const std::string& comment) {
  std::string text = "# " + comment + "\n";
  size_t first_vertex = 1;
  for (const ObjLineObject& object : objects) {
    text += "o " + object.name + "\n";
    if (object.lines == nullptr) continue;
    AppendLines(*object.lines, first_vertex, text);
    first_vertex += 2 * (object.lines->size() / 6);
  }
  return text;
}

}  // namespace myo_io
