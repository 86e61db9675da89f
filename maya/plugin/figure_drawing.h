#pragma once
// Hands a locator's figure from the core to the host: to Viewport 2.0
// through its draw manager, to the legacy viewport through OpenGL calls.
// Also the reading of locator plugs that leaves a value alone when the read
// fails.

#include <maya/M3dView.h>
#include <maya/MBoundingBox.h>
#include <maya/MHWGeometryUtilities.h>
#include <maya/MObject.h>
#include <maya/MUIDrawManager.h>

#include "core/locators/locator_figures.h"

class MGLFunctionTable;

namespace myo_maya {

myo_core::FigureStatus ToFigureStatus(MHWRender::DisplayStatus status);
myo_core::FigureStatus ToFigureStatus(M3dView::DisplayStatus status);

MBoundingBox ToBoundingBox(const myo_core::FigureBounds& bounds);

// All drawables of the figure in one drawable of automatic selectability:
// line width 2, solid lines, flat paint.
void DrawFigure(const myo_core::LocatorFigure& figure, MHWRender::MUIDrawManager& draw_manager);

// The same figure by OpenGL calls: outlines edge by edge, box faces as six
// quad strips, a filled arc as a wedge of one triangle strip.
void DrawFigureGL(const myo_core::LocatorFigure& figure, MGLFunctionTable& gl);

// Plug reads into a field that stays as it was when the plug is null or the
// read fails.
void ReadPlug(const MObject& node, const MObject& attribute, float& value);
void ReadPlug(const MObject& node, const MObject& attribute, int& value);
void ReadPlug(const MObject& node, const MObject& attribute, myo_core::Point3& value);

}  // namespace myo_maya
