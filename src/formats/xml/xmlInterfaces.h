#pragma once

#include <string>

/// The seams between the XML reader, the descriptions of elements and the code that takes the
/// content. Operations keep their order; a new one goes at the end.

class IXmlReader;

/// Who hears of what is wrong with a file. Lines count from 1, columns from 0; 0, 0 stands for a
/// failure without a place.
class IXmlErrorHandler {
 public:
  virtual ~IXmlErrorHandler() = default;
  /// The end of the load.
  virtual void OnError(const char* message, int line, int column) = 0;
  /// Content that is skipped.
  virtual void OnUnknownElement(const char* name, const char* parent, int line, int column) = 0;
  virtual void OnUnknownAttribute(const char* element, const char* attribute, int line,
                                  int column) = 0;
};

/// What happens at an element. It only hears of elements that have passed the validation; each
/// operation may end the load with IXmlReader::Abort.
class IXmlHandler {
 public:
  virtual ~IXmlHandler() = default;
  /// The attributes can be read during this call only.
  virtual void OnStart(IXmlReader& reader) = 0;
  /// The text can be read, unless it was handed out in words.
  virtual void OnEnd(IXmlReader& reader) = 0;
  /// One word of the text, which GetText gives.
  virtual void OnText(IXmlReader& reader) = 0;
  /// Whether the text is to be handed out word by word, so that a long list never stands in memory
  /// as text.
  virtual bool WantsWords() = 0;
};

/// How often a child element may occur: a bit set.
constexpr int KVN_XML_ONCE = 0;      // optional, once at most
constexpr int KVN_XML_REQUIRED = 1;  // exactly once
constexpr int KVN_XML_MANY = 2;      // any number
constexpr int KVN_XML_ONE_OR_MORE = 3;

/// What is to be done about content that a binding doesn't know: a bit set, or KVN_XML_INHERIT for
/// the options of the element around it. A root that inherits is strict.
constexpr int KVN_XML_TOLERANT = 0;           // a warning each
constexpr int KVN_XML_STRICT_ATTRIBUTES = 1;  // an unknown attribute is an error
constexpr int KVN_XML_STRICT_CHILDREN = 2;    // an unknown child element is an error
constexpr int KVN_XML_STRICT = KVN_XML_STRICT_ATTRIBUTES | KVN_XML_STRICT_CHILDREN;
constexpr int KVN_XML_INHERIT = 4;

/// Description of an element: its attributes, its children and who takes the content. One binding
/// may stand below several others, and below itself; nobody owns the bindings below it.
class IXmlBinding {
 public:
  virtual void AddChild(IXmlBinding& binding, int occurrence) = 0;
  virtual void AddAttribute(const char* name, bool required) = 0;
  /// Destroys the binding.
  virtual void Release() = 0;
  virtual ~IXmlBinding() = default;
};

class IXmlReader {
 public:
  /// Reads a file against the description of its root. False after an error, which the handler (may
  /// be null) has heard of.
  virtual bool Parse(const char* fileName, IXmlBinding& rootBinding,
                     IXmlErrorHandler* errorHandler) = 0;
  /// Ends the load with a message; nothing more of the file is delivered. Only the first call
  /// counts.
  virtual void Abort(const char* message) = 0;
  virtual void GetPosition(int& line, int& column) = 0;
  /// Text of the element in hand, in 8 bits.
  virtual const char* GetText() = 0;
  /// The same with "\n" and "\t" for line feed and tab, and any other character behind a backslash
  /// for itself.
  virtual void GetUnescapedText(std::string& text) = 0;
  /// An absent attribute gives the default. False when the text isn't of the type: the load is then
  /// aborted and `value` is the default. It is meant that text behind a number other than zero
  /// passes ("12abc" is 12), while "0abc" is refused.
  virtual bool GetAttribute(const char* name, double& value, double defaultValue) = 0;
  virtual bool GetAttribute(const char* name, int& value, int defaultValue) = 0;
  virtual bool GetAttribute(const char* name, bool& value, bool defaultValue) = 0;
  /// False when it is absent; `value` is then empty.
  virtual bool GetAttribute(const char* name, std::string& value) = 0;
  /// A plain binding. The caller releases it.
  virtual IXmlBinding* CreateBinding(const char* name, int options,
                                     IXmlHandler* handler = nullptr) = 0;
  /// Destroys the reader.
  virtual void Release() = 0;
  virtual ~IXmlReader() = default;
};

/// For std::unique_ptr over objects that are ended by their Release.
struct XmlReleaser {
  template <class Interface>
  void operator()(Interface* object) const {
    object->Release();
  }
};
