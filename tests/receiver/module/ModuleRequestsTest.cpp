#include "receiver/module/ModuleRequests.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace zor::receiver {
namespace {

using namespace std::literals;

/// A request in short: "id command result host port file".
std::string inShort(std::string_view datagram) {
  static constexpr const char* kCommands[] = {"unreadable", "info", "upgrade", "upgradestatus"};
  const std::optional<ModuleRequest> request = readModuleRequest(datagram);
  if (!request) return "none";
  std::string text = std::to_string(request->id) + " " + kCommands[static_cast<int>(request->command)] + " " +
                     std::to_string(request->result);
  if (!request->host.empty())
    text += " " + request->host + " " + std::to_string(request->port) + " " + request->file;
  return text;
}

std::string upgrade(std::string_view pairs) {
  return inShort("xcmd_req:123:cmd=upgrade," + std::string{pairs} + "\r\n");
}

TEST(ModuleRequests, AreReadFromAnyBytes) {
  std::string longest = "xcmd_req:5:cmd=info,pad=";
  longest.resize(ModuleRequest::kMaxLength, 'x');
  const std::string tooLong = longest + "x";
  const struct {
    std::string_view datagram, request;
  } kCases[] = {
      {"xcmd_req:0:cmd=info,\r\n", "0 info 0"},
      {"XCMD_Req:19:cmd=info", "19 info 0"},
      {"xcmd_req:321:cmd=upgradestatus\r\n", "321 upgradestatus 0"},
      {"xcmd_req:5:extra=a=b,cmd=info \t\r\n", "5 info 0"},
      {"xcmd_req:-2147483648:cmd=info", "-2147483648 info 0"},
      {longest, "5 info 0"},
      // What cannot be answered.
      {tooLong, "none"},
      {"", "none"},
      {"xcmd_req", "none"},
      {"xcmd_req:", "none"},
      {"xcmd_req:5", "none"},
      {"xcmd_req::cmd=info", "none"},
      {"xcmd_req:2147483648:cmd=info", "none"},
      {"xcmd_req:5x:cmd=info", "none"},
      {"xcmd_req: 5:cmd=info", "none"},
      {"xcmd_req:+5:cmd=info", "none"},
      {"xcmd_rsp:5:cmd=info", "none"},
      {"xcmd_req\0:5:cmd=info"sv, "none"},
      // What can be answered, but not obeyed.
      {"xcmd_req:5:", "5 unreadable -1"},
      {"xcmd_req:5:cmd=INFO", "5 unreadable -1"},
      {"xcmd_req:5:CMD=info", "5 unreadable -1"},
      {"xcmd_req:5:cmd=info,cmd=info", "5 unreadable -1"},
      {"xcmd_req:5:cmd=info\0"sv, "5 unreadable -1"},
      {"xcmd_req:5:cmd=info\r\nxcmd_req:6:cmd=info\r\n", "5 unreadable -1"},
      {"xcmd_req:5:\xff\xfe,,=\n", "5 unreadable -1"},
  };
  for (const auto& [datagram, request] : kCases) EXPECT_EQ(inShort(datagram), request) << datagram;
}

TEST(ModuleRequests, PutOnlyCheckedTextsIntoUpgrades) {
  const std::string longestHost(127, 'h');
  const std::string longestFile = "/" + std::string(511, 'f');
  const struct {
    std::string pairs, request;
  } kCases[] = {
      {"host=192.168.1.20,file=/app.bin", "123 upgrade 0 192.168.1.20 80 /app.bin"},
      {"host=fw.home-net,port=8080,file=/a/../b?v=1&c=%20:@",
       "123 upgrade 0 fw.home-net 8080 /a/../b?v=1&c=%20:@"},
      {"file=/f,port=65535,host=h,", "123 upgrade 0 h 65535 /f"},
      {"host=" + longestHost + ",file=" + longestFile, "123 upgrade 0 " + longestHost + " 80 " + longestFile},
      {"host=h", "123 upgrade -1"},
      {"file=/f", "123 upgrade -1"},
      {"host=h,file=/f,host=g", "123 unreadable -1"},
      {"host=h,file=/a,b", "123 unreadable -1"},
      {"host=,file=/f", "123 upgrade -2"},
      {"host=" + longestHost + "h,file=/f", "123 upgrade -2"},
      {"host=-h,file=/f", "123 upgrade -2"},
      {"host=u@h,file=/f", "123 upgrade -2"},
      {"host=h/x?,file=/f", "123 upgrade -2"},
      {"host=h h,file=/f", "123 upgrade -2"},
      {"host=h\xc3\xa9,file=/f", "123 upgrade -2"},
      {"host=[::1],file=/f", "123 upgrade -2"},
      {"host=h,port=,file=/f", "123 upgrade -3"},
      {"host=h,port=0,file=/f", "123 upgrade -3"},
      {"host=h,port=65536,file=/f", "123 upgrade -3"},
      {"host=h,port=-1,file=/f", "123 upgrade -3"},
      {"host=h,port=80 ,file=/f", "123 upgrade -3"},
      {"host=h,port=0x50,file=/f", "123 upgrade -3"},
      {"host=h,file=", "123 upgrade -4"},
      {"host=h,file=f", "123 upgrade -4"},
      {"host=h,file=" + longestFile + "f", "123 upgrade -4"},
      {"host=h,file=/a b", "123 upgrade -4"},
      {"host=h,file=/a\r\nX-Header: b", "123 upgrade -4"},
      {"host=h,file=/a\x7f", "123 upgrade -4"},
      {"host=h,file=/\xc3\xa9", "123 upgrade -4"},
  };
  for (const auto& [pairs, request] : kCases) EXPECT_EQ(upgrade(pairs), request) << pairs;
}

}  // namespace
}  // namespace zor::receiver
