#include "vomsg/entity/VoMsgCommonValue.h"

#include <cstddef>

namespace vomsg::detail {

namespace {

// The most frequent ones first. New rows may go anywhere: the numbers leave no process.
constexpr std::string_view kValues[] = {
    "text/plain",
    "text/html",
    "quoted-printable",
    "base64",
    "7bit",
    "8bit",
    "multipart/alternative",
    "multipart/mixed",
    "multipart/related",
    "application/octet-stream",
    "image/jpeg",
    "image/png",
    "image/gif",
    "application/pdf",
    "message/rfc822",
    "binary",
    "multipart/signed",
    "multipart/report",
    "multipart/digest",
    "multipart/encrypted",
    "message/delivery-status",
    "text/calendar",
    "text/rfc822-headers",
    "text/x-patch",
    "text/csv",
    "application/zip",
    "application/msword",
    "application/ms-tnef",
    "application/pgp-signature",
    "application/pkcs7-signature",
    "application/x-pkcs7-signature",
    "application/pkcs7-mime",
    "application/x-pkcs7-mime",
    "audio/mpeg",
    "video/mp4",
    "x-uuencode",
    "message/partial",
    "message/external-body",
};
constexpr std::size_t kFirst = static_cast<std::size_t>(CommonValue::none) + 1;
static_assert(kFirst + sizeof kValues / sizeof *kValues <= 256);

}  // namespace

CommonValue commonValueOf(std::string_view value) noexcept {
  for (std::size_t i = 0; i < sizeof kValues / sizeof *kValues; ++i)
    if (kValues[i] == value) return static_cast<CommonValue>(kFirst + i);
  return CommonValue::unknown;
}

const char* textOf(CommonValue value) noexcept {
  const auto number = static_cast<std::size_t>(value);
  return number < kFirst ? nullptr : kValues[number - kFirst].data();
}

}  // namespace vomsg::detail
