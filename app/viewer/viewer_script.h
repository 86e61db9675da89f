#pragma once
// The fixed parts of viewer.html: the head (style, error capture, controls)
// and the script that builds the scene from the page's data and plays it.

#include <string>

namespace myo_app {

// Everything from <!doctype html> to the controls of the body, titled by
// the scene file's name.
std::string ViewerPageHead(const std::string& scene_path);

// The page's script. It reads the element "myo-scene" (the objects) and the
// elements of class "myo-frame" (one per written frame), and understands
// these address fragments:
//   #check     renders two frames and reports in the title whether the page
//              drew something, whether stepping the slider changed the
//              picture, and any error ("viewer-check: ok ..." or
//              "viewer-check: FAILED ...");
//   #sheet=1,24,48&columns=2&width=480&height=360&color=skin:speed
//              draws the chosen frames side by side as one contact sheet.
const char* ViewerScript();

}  // namespace myo_app
