#include "foundation/errorLog.h"

#include <cstdio>

#include "foundation/resultCodes.h"

namespace {

constexpr int kMessageSize = 2000;  // of a text with its prefix

}  // namespace

KVN_errorStringHandler::~KVN_errorStringHandler() { SetRedirect(nullptr, /*own=*/false); }

int KVN_errorStringHandler::LogError(int code, const char* text, const char* prefix) {
  if (code == 0) return 0;
  if (text == nullptr) text = GetErrorString(code);
  char message[kMessageSize];
  if (prefix != nullptr) {
    std::snprintf(message, sizeof message, "%s%s", prefix, text);
    text = message;
  }
  if (redirect != nullptr) {
    redirect->Log(code, text);
  } else {
    Store(code, text);
  }
  return code;
}

void KVN_errorStringHandler::Store(int code, const char* text) {
  if (Add(text) < 0) return;
  if (codes.Add(code) < 0) (void)Delete(GetNumItems() - 1);  // both lists stay of one length
}

const char* KVN_errorStringHandler::GetLastErrorMessage() const {
  const char* newest = GetMessage(GetNumItems() - 1);
  return newest == nullptr ? "NO ERRORS SO FAR" : newest;
}

const char* KVN_errorStringHandler::GetMessage(int position) const {
  return position >= 0 && position < GetNumItems() ? GetString(position) : nullptr;
}

int KVN_errorStringHandler::GetCode(int position) const {
  return position >= 0 && position < codes.GetNumItems() ? codes[position] : 0;
}

void KVN_errorStringHandler::SetRedirect(KVN_errorTarget* target, bool own) {
  if (ownsRedirect && redirect != target) delete redirect;
  redirect = target;
  ownsRedirect = own && target != nullptr;
}

KVN_errorStringHandler& KVN_errorLog() {
  static KVN_errorStringHandler log;
  return log;
}

int LogError(int code, const char* text, const char* prefix) {
  return KVN_errorLog().LogError(code, text, prefix);
}

const char* GetLastErrorMessage() { return KVN_errorLog().GetLastErrorMessage(); }

const char* GetErrorString(int code) {
  switch (code) {
    case KVN_SUCCESS:
    case KVN_FAILURE:
    case KVN_EXPRESSION_ERROR:
    case KVN_LENGTH_MISMATCH:
    case KVN_NO_USEFUL_SAMPLES:
    case KVN_HAS_CHILDREN:
    case KVN_OPEN_TO_READ:
    case KVN_OPEN_TO_WRITE:
    case KVN_END_OF_FILE:
    case KVN_SYNTAX_ERROR:
    case KVN_NOT_READY:
    case KVN_NOT_CONSISTENT:
      return "NO ERROR";
    case KVN_REFUSED:
      return "OUT OF RANGE";
    case KVN_ILLEGAL_ID:
      return "ILLEGAL IDENTIFIER";
    case KVN_DUPLICATED_ID:
      return "DUPLICATED IDENTIFIER";
    case KVN_NO_MEMORY:
      return "OUT OF MEMORY";
    case KVN_NOT_APPLICABLE:
      return "WRONG NODE TYPE";
    case KVN_FILE_IO:
      return "FILE I/O FAILED";
    case KVN_NO_MORE_TOKENS:
      return "NO MORE TOKENS";
    case KVN_LEXICAL_ERROR:
      return "LEXICAL ERROR. CHARACTER UNKNOWN";
    case KVN_UNEXPECTED_EOF:
      return "UNEXPECTED END OF FILE";
    default:
      return "UNKNOWN ERROR CODE";
  }
}
