#pragma once
// The map port answered by Maya: inside deform from the data block, outside
// evaluation from plugs. Writes always go to plugs, so that they are stored
// with the scene.

#include <maya/MDataBlock.h>
#include <maya/MObject.h>

#include <string>
#include <vector>

#include "core/maps/map_port.h"
#include "maya/plugin/node_attributes.h"

namespace myo_maya {

class MayaMapPort : public myo_core::MapPort {
 public:
  // `block` null: read from plugs.
  MayaMapPort(const MObject& node, MDataBlock* block, const NodeAttributes& attributes);

  uint32_t ElementCount(const std::string& list, const std::string& element, uint32_t index) const override;
  void ReadFloats(const std::string& list, const std::string& element, uint32_t index, uint32_t count,
                  float default_value, std::vector<float>& out) const override;
  void ReadFloatsAt(const std::string& list, const std::string& element, uint32_t index, uint32_t offset,
                    uint32_t count, uint32_t total, float default_value, std::vector<float>& out) const override;
  void ReadVectors(const std::string& list, const std::string& element, const std::vector<std::string>& children,
                   uint32_t index, uint32_t count, float default_value, std::vector<float>& out) const override;
  void WriteFloats(const std::string& list, const std::string& element, uint32_t index,
                   const std::vector<float>& values) override;
  void WriteVectors(const std::string& list, const std::string& element, const std::vector<std::string>& children,
                    uint32_t index, const std::vector<float>& values) override;

 private:
  std::vector<MObject> Children(const std::vector<std::string>& names) const;

  MObject node_;
  MDataBlock* block_;
  const NodeAttributes& attributes_;
};

}  // namespace myo_maya
