#include "gateway/NextHop.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <streambuf>

namespace gateway {

namespace {

int toCommand(const std::vector<std::string>& command, const vomsg::Message& message, std::string& reason) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return reason = "no pipe", kTryAgain;
  std::vector<char*> arguments;
  for (const std::string& each : command) arguments.push_back(const_cast<char*>(each.c_str()));
  arguments.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(ends[0], STDIN_FILENO);
    ::execvp(arguments[0], arguments.data());
    ::_exit(kTryAgain);  // not there, or not to be run: that can be mended
  }
  ::close(ends[0]);
  if (child < 0) {
    ::close(ends[1]);
    return reason = "no process", kTryAgain;
  }
  const vomsg::Status written = message.write(ends[1]);
  // The command must not take a message that broke off for a whole one.
  if (!written) ::kill(child, SIGKILL);
  ::close(ends[1]);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) != 0) return reason = command[0] + " failed", WEXITSTATUS(status);
  if (!written) return reason = command[0] + " did not read the message: " + written.error().text(), kTryAgain;
  if (!WIFEXITED(status)) return reason = command[0] + " was killed", kTryAgain;
  return kDone;
}

// Sends what is written to it as the data of a message: line ends become CR LF, a dot at a line's start two.
class DataStream : public std::streambuf {
 public:
  explicit DataStream(int fd) : mSocket(fd) {}
  bool finish() { return (mAtLineStart || put("\r\n")) && put(".\r\n") && send(); }

 protected:
  std::streamsize xsputn(const char* data, std::streamsize n) override {
    for (std::streamsize i = 0; i < n; ++i) {
      if (overflow(static_cast<unsigned char>(data[i])) == EOF) return i;
    }
    return n;
  }
  int overflow(int value) override {
    const char c = static_cast<char>(value);
    if (c == '.' && mAtLineStart) mOut += '.';
    if (c == '\n' && mLast != '\r') mOut += '\r';
    mOut += c;
    mAtLineStart = c == '\n';
    mLast = c;
    return mOut.size() < 65536 || send() ? value : EOF;
  }

 private:
  bool put(const char* text) {
    mOut += text;
    return true;
  }
  bool send() {
    const char* data = mOut.data();
    std::size_t rest = mOut.size();
    while (rest > 0) {
      const ssize_t done = ::send(mSocket, data, rest, MSG_NOSIGNAL);
      if (done < 0 && errno == EINTR) continue;
      if (done <= 0) return false;
      data += done;
      rest -= static_cast<std::size_t>(done);
    }
    mOut.clear();
    return true;
  }

  int mSocket;
  std::string mOut;
  bool mAtLineStart = true;
  char mLast = '\n';
};

class SmtpClient {
 public:
  explicit SmtpClient(std::string& reason) : mReason(reason) {}
  ~SmtpClient() {
    if (mSocket >= 0) ::close(mSocket);
  }

  int deliver(const NextHop& hop, const Delivery& delivery, const vomsg::Message& message) {
    for (const std::string& each : delivery.recipients) {
      if (!isAddress(each)) return mReason = "no address: " + each, kRefused;
    }
    if (!isAddress(delivery.sender)) return mReason = "no address: " + delivery.sender, kRefused;
    if (!connect(hop)) return kTryAgain;
    if (const int code = answer("greeting", 220)) return code;
    if (const int code = ask("EHLO localhost", 250)) return code;
    if (const int code = ask("MAIL FROM:<" + delivery.sender + ">", 250)) return code;
    for (const std::string& each : delivery.recipients) {
      if (const int code = ask("RCPT TO:<" + each + ">", 250)) return code;
    }
    if (const int code = ask("DATA", 354)) return code;
    DataStream data(mSocket);
    std::ostream out(&data);
    if (!message.write(out) || !data.finish()) return mReason = "the connection broke off", kTryAgain;
    if (const int code = answer("data", 250)) return code;
    ask("QUIT", 221);  // the message is the next hop's already
    mReason.clear();
    return kDone;
  }

 private:
  // Nothing that ends the command it stands in.
  static bool isAddress(const std::string& address) {
    return std::none_of(address.begin(), address.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '<' || c == '>'; });
  }

  bool connect(const NextHop& hop) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (::getaddrinfo(hop.smtpHost.c_str(), hop.smtpPort.c_str(), &hints, &found) != 0) {
      mReason = "no such address: " + hop.smtpHost;
      return false;
    }
    mSocket = ::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval limit{300, 0};
    ::setsockopt(mSocket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(mSocket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    const bool isConnected = mSocket >= 0 && ::connect(mSocket, found->ai_addr, found->ai_addrlen) == 0;
    ::freeaddrinfo(found);
    if (!isConnected) mReason = "no connection to " + hop.smtpHost + ":" + hop.smtpPort;
    return isConnected;
  }

  int ask(const std::string& command, int wanted) {
    const std::string line = command + "\r\n";
    if (::send(mSocket, line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
      return mReason = "the connection broke off", kTryAgain;
    }
    return answer(command.substr(0, command.find(' ')), wanted);
  }

  // Reads a reply of one or more lines. 0 when it is the wanted one.
  int answer(const std::string& what, int wanted) {
    std::string line;
    for (unsigned read = 0; read < 65536; ++read) {
      char c = 0;
      if (::recv(mSocket, &c, 1, 0) != 1) return mReason = what + ": no answer", kTryAgain;
      if (c != '\n') {
        line += c;
        continue;
      }
      if (line.size() >= 4 && line[3] == '-') {
        line.clear();
        continue;
      }
      const int code = std::atoi(line.c_str());
      if (code == wanted || (wanted == 250 && code == 251)) return 0;
      mReason = what + ": " + line;
      return code / 100 == 5 ? kRefused : kTryAgain;
    }
    return mReason = what + ": the answer has no end", kTryAgain;
  }

  std::string& mReason;
  int mSocket = -1;
};

}  // namespace

int handOn(const NextHop& hop, const Delivery& delivery, const vomsg::Message& message, std::string& reason) {
  if (!hop.command.empty()) return toCommand(hop.command, message, reason);
  if (!hop.smtpHost.empty()) return SmtpClient(reason).deliver(hop, delivery, message);
  const vomsg::Status done = message.write(STDOUT_FILENO);
  if (!done) reason = "standard output: " + done.error().text();
  return done ? kDone : kTryAgain;
}

}  // namespace gateway
