#include <cstdio>

#include "formats/text/kvnSpeaker.h"
#include "foundation/intArray.h"
#include "foundation/rectangle.h"
#include "foundation/resultCodes.h"
#include "network/creation.h"
#include "network/documentation.h"
#include "network/header.h"
#include "network/screenInfo.h"
#include "network/textBoxList.h"
#include "network/userProperties.h"

int KVN_kvnSpeaker::ReadHeader(KVN_header& header) {
  return ReadBlock("HEADER", [&] {
    return FirstOf(
        [&] {
          return ReadText("ID", KVN_TOKEN_IDENTIFIER, [&](const char* id) {
            return ReportError(header.SetId(id), "Invalid ID");
          });
        },
        [&] {
          return ReadText("NAME", KVN_TOKEN_STRING, [&](const char* text) {
            return ReportError(header.SetName(text), nullptr);
          });
        },
        [&] {
          return ReadText("COMMENT", KVN_TOKEN_STRING, [&](const char* text) {
            return ReportError(header.SetComment(text), nullptr);
          });
        },
        [&] { return ReportUnknown("Header Statement"); });
  });
}

int KVN_kvnSpeaker::ReadCreation(KVN_creation& creation) {
  return ReadBlock("CREATION", [&] {
    return FirstOf(
        [&] {
          return ReadText("CREATOR", KVN_TOKEN_STRING, [&](const char* text) {
            return ReportError(creation.SetCreator(text), nullptr);
          });
        },
        [&] {
          return ReadText("CREATED", KVN_TOKEN_STRING, [&](const char* text) {
            return ReportError(creation.SetCreated(text), nullptr);
          });
        },
        [&] {
          return ReadText("MODIFIED", KVN_TOKEN_STRING, [&](const char* text) {
            return ReportError(creation.SetModified(text), nullptr);
          });
        },
        [&] { return ReportUnknown("Creation Statement"); });
  });
}

namespace {

struct IntField {
  const char* name;
  int* value;
};

}  // namespace

int KVN_kvnSpeaker::ReadRectangle(const char* name, KVN_rectangle& rectangle) {
  return ReadBlock(name, [&] {
    const IntField fields[] = {
        {"CENTER_X", &rectangle.center_X},
        {"CENTER_Y", &rectangle.center_Y},
        {"WIDTH", &rectangle.width},
        {"HEIGHT", &rectangle.height},
    };
    for (const IntField& field : fields) {
      int result = ReadIntStatement(field.name, *field.value);
      if (result != KVN_NOT_THIS_STATEMENT) return result;
    }
    return ReportUnknown("Rectangle Statement");
  });
}

int KVN_kvnSpeaker::ReadScreen(KVN_screenInfo& screen) {
  return ReadBlock("SCREEN", [&] {
    int result = ReadRectangle("POSITION", screen.position);
    if (result != KVN_NOT_THIS_STATEMENT) return result;
    const IntField fields[] = {
        {"COLOR", &screen.color},
        {"SELCOLOR", &screen.selColor},
        {"FONT", &screen.font},
        {"FONTCOLOR", &screen.fontColor},
        {"BORDERTHICKNESS", &screen.borderThickness},
        {"BORDERCOLOR", &screen.borderColor},
    };
    for (const IntField& field : fields) {
      result = ReadIntStatement(field.name, *field.value);
      if (result != KVN_NOT_THIS_STATEMENT) return result;
    }
    auto setBit = [&screen](int bit) {
      return [&screen, bit](int flag) {
        screen.screenFlags = flag != 0 ? screen.screenFlags | bit : screen.screenFlags & ~bit;
      };
    };
    return FirstOf([&] { return ReadBool("SHOWINARCS", setBit(KVN_screenInfo::kShowInArcs)); },
                   [&] { return ReadBool("SHOWOUTARCS", setBit(KVN_screenInfo::kShowOutArcs)); },
                   [&] { return ReportUnknown("Screen Information Statement"); });
  });
}

int KVN_kvnSpeaker::ReadUserProperties(KVN_userProperties& properties) {
  return ReadBlock("USER_PROPERTIES", [&] {
    if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result != 0) return result;
    // A repeated key costs its statement: adding it would move the first one to the end.
    int added = properties.FindProperty(tokenText) >= 0
                    ? KVN_REFUSED
                    : properties.AddProperty(tokenText, nullptr);
    if (added < 0) return ReportError(added, nullptr);
    int position = properties.GetCount() - 1;
    if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result != 0) return result;
    if (int result = RequireToken(KVN_TOKEN_STRING, nullptr); result != 0) return result;
    return ReportError(properties.SetPropertyValue(position, tokenText), nullptr);
  });
}

int KVN_kvnSpeaker::ReadDocumentation(KVN_documentation& documentation) {
  return ReadBlock("DOCUMENTATION", [&] {
    if (int result = RequireToken(KVN_TOKEN_STRING, nullptr); result != 0) return result;
    if (int added = documentation.AddDocument(tokenText, nullptr); added < 0) {
      return ReportError(added, nullptr);
    }
    int position = documentation.GetCount() - 1;
    if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result != 0) return result;
    if (int result = RequireToken(KVN_TOKEN_STRING, nullptr); result != 0) return result;
    return ReportError(documentation.SetLocation(position, tokenText), nullptr);
  });
}

int KVN_kvnSpeaker::ReadScreenComment(KVN_textBoxList& boxes) {
  if (int result = ReadAssignment("SCREENCOMMENT"); result != 0) return result;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result != 0) return result;
  KVN_intArray numbers;
  if (int result = ReadIntList(numbers); result != 0) return result;
  if (numbers.GetNumItems() < 4) {
    return ReportError(KVN_REFUSED, "ERROR: Wrong Number Of Screen Coordinates");
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, ","); result != 0) return result;
  if (int result = RequireToken(KVN_TOKEN_STRING, nullptr); result != 0) return result;
  KVN_rectangle position;
  position.center_X = numbers[0];
  position.center_Y = numbers[1];
  position.width = numbers[2];
  position.height = numbers[3];
  int added = boxes.AddTextBox(position, tokenText);
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "}"); result != 0) return result;
  return ReportError(added < 0 ? added : 0, nullptr);
}
