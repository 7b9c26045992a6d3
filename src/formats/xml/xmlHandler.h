#pragma once

#include "formats/xml/xmlBinding.h"

/// A binding whose three callbacks are member functions of a loader that is itself the reader. A
/// null function is skipped, and a binding with none at all has no handler, so that the reader
/// keeps no text for it.
template <class Loader>
class XmlHandler : public XmlBinding, public IXmlHandler {
 public:
  using Callback = void (Loader::*)();

  XmlHandler(const char* theName, int theOptions, Loader& theLoader, Callback theStart = nullptr,
             Callback theEnd = nullptr, Callback theText = nullptr)
      : XmlBinding(theName, theOptions),
        loader(theLoader),
        start(theStart),
        end(theEnd),
        text(theText) {
    if (start != nullptr || end != nullptr || text != nullptr) handler = this;
  }

  void OnStart(IXmlReader&) override { Call(start); }
  void OnEnd(IXmlReader&) override { Call(end); }
  void OnText(IXmlReader&) override { Call(text); }
  bool WantsWords() override { return text != nullptr; }

 protected:
  Loader& loader;  // outlives the binding

 private:
  void Call(Callback callback) {
    if (callback != nullptr) (loader.*callback)();
  }

  Callback start;
  Callback end;
  Callback text;
};

/// The same callbacks for a binding that CreateBinding makes: for loaders that get a reader from
/// somebody else.
template <class Loader>
class XmlDelegator : public IXmlHandler {
 public:
  using Callback = void (Loader::*)(IXmlReader& reader);

  XmlDelegator(Loader& theLoader, Callback theStart, Callback theEnd = nullptr,
               Callback theText = nullptr)
      : loader(theLoader), start(theStart), end(theEnd), text(theText) {}

  void OnStart(IXmlReader& reader) override { Call(start, reader); }
  void OnEnd(IXmlReader& reader) override { Call(end, reader); }
  void OnText(IXmlReader& reader) override { Call(text, reader); }
  bool WantsWords() override { return text != nullptr; }

 private:
  void Call(Callback callback, IXmlReader& reader) {
    if (callback != nullptr) (loader.*callback)(reader);
  }

  Loader& loader;  // outlives the delegator
  Callback start;
  Callback end;
  Callback text;
};
