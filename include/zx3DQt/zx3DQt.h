// The whole of zx3DQt, with the parts of zx3D that its interface is written in.
#pragma once

#include <zx3DQt/BGFXDefaultCallback.h>
#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/BGFXOffscreenWidget.h>
#include <zx3DQt/BGFXPointLightSource.h>
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/BGFXWindow.h>
#include <zx3DQt/Camera.h>
#include <zx3DQt/CameraBindings.h>
#include <zx3DQt/CameraController.h>
#include <zx3DQt/CameraTypes.h>
#include <zx3DQt/CapsReport.h>
#include <zx3DQt/ColorMap.h>
#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/CoordinateGrid.h>
#include <zx3DQt/Dimensions.h>
#include <zx3DQt/DistanceFade.h>
#include <zx3DQt/FlyCamera.h>
#include <zx3DQt/FrameNotifier.h>
#include <zx3DQt/FrameStatistics.h>
#include <zx3DQt/Highlight.h>
#include <zx3DQt/LabelBatch.h>
#include <zx3DQt/Library.h>
#include <zx3DQt/LineBatch.h>
#include <zx3DQt/MeshBatch.h>
#include <zx3DQt/MeshEdges.h>
#include <zx3DQt/OrbitCamera.h>
#include <zx3DQt/PickHit.h>
#include <zx3DQt/PickSearch.h>
#include <zx3DQt/Picker.h>
#include <zx3DQt/PictureOptions.h>
#include <zx3DQt/PlanarCamera.h>
#include <zx3DQt/PointBatch.h>
#include <zx3DQt/Polygons.h>
#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/Shapes.h>
#include <zx3DQt/SizeUnit.h>
#include <zx3DQt/UpdateEvents.h>
#include <zx3DQt/WorldPosition.h>

#include <zx3D/zx3D.h>

/// @namespace zarvex::zx3DQt
/// Scenes drawn with bgfx in Qt's windows and widgets: start and stop, render targets, views, the renderer,
/// and what is drawn with it.
