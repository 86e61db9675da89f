// The OBJ parser the mesh reader calls, compiled from its header into the
// fuzz targets. Definitions in the executable take the place of the shared
// library's, so coverage and the sanitizers see inside the parser too.
#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>
