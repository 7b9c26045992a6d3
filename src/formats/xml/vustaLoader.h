#pragma once

#include <memory>
#include <vector>

#include "formats/xml/networkLoader.h"

/// The graphical form of a network: where its nodes stand, how they look, the submodels, texts of
/// the diagnosis attributes. Its elements are held against their description; what they say is not
/// kept yet.
class XmlVustaLoader : public IXmlVustaLoader {
 public:
  explicit XmlVustaLoader(IXmlReader& reader);
  XmlVustaLoader(const XmlVustaLoader&) = delete;
  XmlVustaLoader& operator=(const XmlVustaLoader&) = delete;

  IXmlBinding* GetRootBinding() override { return root; }
  void Release() override { delete this; }

 private:
  /// `attributes` are names separated by blanks, the required ones with a "!" behind them.
  IXmlBinding& Make(const char* name, const char* attributes = "", int options = KVN_XML_INHERIT);
  IXmlBinding& MakeFont(bool hasAlignment);
  IXmlBinding& MakeNode();
  IXmlBinding& MakeState();
  IXmlBinding& MakeTextBox();
  /// What nodes and submodels have in common.
  void AddLooks(IXmlBinding& object);
  /// What the network and a submodel may hold.
  void AddContent(IXmlBinding& container);

  IXmlReader& reader;
  std::vector<std::unique_ptr<IXmlBinding, XmlReleaser>> bindings;
  IXmlBinding* root = nullptr;  // in `bindings`, as are these
  IXmlBinding* node = nullptr;
  IXmlBinding* submodel = nullptr;
  IXmlBinding* textBox = nullptr;
};
