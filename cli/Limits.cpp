#include "cli/Limits.h"

#include <cstdio>
#include <functional>
#include <memory>

#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoMsgStandAloneLog.h"

namespace cli {

void addLimitOptions(CLI::App& app) {
  const auto add = [&app]<class Value>(const char* name, void (*set)(Value), const char* help) {
    app.add_option_function<Value>(
           name, [set](const Value& value) { set(value); }, help)
        ->group("Limits");
  };
  add("--max-entity-headers", &VoMsgSetMaxEntityHeaders, "Header fields per block, 0: no limit");
  add("--max-header-address", &VoMsgSetMaxHeaderAddress, "Addresses per address field, 0: no limit");
  add("--max-header-params", &VoMsgSetMaxHeaderParams, "Parameters per field, 0: no limit");
  VoMsgSetMaxDecodedSize(1ull << 30);
  add("--max-decoded-size", &VoMsgSetMaxDecodedSize,
      "Bytes that the decoded content of a message may come to, 0: no limit [1073741824]");
  add(
      "--max-extract-level", +[](int level) { VoMsgMailMessage::mMaxExtractLevel = level; },
      "Deepest nesting level that is still opened");
  add("--max-memory-resource-size", &VoMsgResourceManager::setMaxMemoryResourceSize,
      "Largest temporary piece of data kept in memory, in bytes");
  add("--total-allocate-memory-limit", &VoMsgResourceManager::setTotalAllocateMemoryLimit,
      "Memory for all temporary data, in bytes");
  app.add_flag_callback(
         "--no-max-address-for-child", [] { VoMsgSetNoMaxAddressForChild(true); },
         "No address limit below the top level")
      ->group("Limits");
  app.add_option_function<std::string>(
         "--tmp-dir-path", [](const std::string& path) { VoMsgResourceManager::setTmpDirPath(path.c_str()); },
         "Folder for temporary files")
      ->group("Limits");
  add("--extra-option", &VoMsgSetExtraOption,
      "Option bits: 1 encode dots, 4 keep fold spaces, 8 strict uuencode, 16 raw Subject, 32 and 64 no header and "
      "parameter limits below the top level");
  app.add_option_function<unsigned>(
      "--log",
      [](unsigned level) {
        static VoMsgStandAloneLog log;
        log.setEnabled(true);
        log.setLogLevel(level);
        log.setDebugSink(stderr);
        voMsgSetHostLog(&log);
      },
      "Print the library's log on stderr, up to this level (0, 1, 2, 9)");
}

}  // namespace cli
