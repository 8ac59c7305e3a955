#include "cli/Editing.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Output.h"

namespace cli {

void check(VoErrorCode code, const std::string& subject) {
  if (voFailed(code)) throw failureOf(code, subject);
}

OpenedMessage openForEditing(const std::string& file) {
  OpenedMessage opened = openMessage(file);
  if (opened.code == kVoTnefMalformed || opened.code == kVoMalformed || opened.code == kVoPartialMessage)
    complain(failureOf(opened.code, file).what());
  else
    check(opened.code, file);
  return opened;
}

void writeMessage(VoMsgMailMessage& message, const std::string& in, const std::string& out) {
  OutputFile output(out);
  const VoErrorCode code = message.writeTo(&output);
  if (code != kVoWriteFailed) check(code, in);  // what the output refused is said by commit()
  output.commit();
}

}  // namespace cli
