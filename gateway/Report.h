// What is told about each message: a line for syslog and standard error, counters for Prometheus.
#pragma once

#include <string>

#include "gateway/Engine.h"

namespace gateway {

class Report {
 public:
  Report(const char* program, bool asJson);
  // One line a message. Nothing from the mail can begin a second line in it.
  void tell(const Delivery& delivery, const Outcome& outcome, double milliseconds) const;
  // Adds the message to the counters in `path`, which many processes share; empty: nothing.
  static void count(const std::string& path, const Outcome& outcome);

 private:
  const char* mProgram;
  bool mAsJson;
};

}  // namespace gateway
