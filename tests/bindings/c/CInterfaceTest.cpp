#include <gtest/gtest.h>
#include <poll.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bindings/c/zorsuite.h"
#include "tests/support/UdpPeer.h"
#include "tests/support/Wait.h"

namespace {

/// A `user` pointer that keeps how often, and on which thread, it was destroyed, and what it was called with.
struct User {
  std::atomic<int> destroyed{0};
  std::thread::id thread;
  std::vector<std::string> heard;
  std::function<void()> act = [] {};

  static User& of(void* user) { return *static_cast<User*>(user); }
  static void destroy(void* user) {
    of(user).thread = std::this_thread::get_id();
    ++of(user).destroyed;
  }
  static void call(void* user) {
    of(user).heard.emplace_back("call");
    of(user).act();
  }
  static void onModule(void* user, const zor_module* module) {
    const zor_text& id = module->id;
    of(user).heard.emplace_back(id.bytes, id.length);
    of(user).heard.emplace_back(module->extension.bytes, module->extension.length);
    of(user).act();
  }
  /// True once it was destroyed, on this thread and exactly once.
  bool isGone() const { return destroyed == 1 && thread == std::this_thread::get_id(); }
};

zor_callbacks callbacksOf(User& user) {
  return {sizeof(zor_callbacks), &user, User::destroy, User::onModule, User::onModule};
}

class CInterface : public testing::Test {
 protected:
  CInterface() {
    zor_set_log_sink([](void*, zor_text) {}, nullptr, nullptr);
    zor_suite_create(&suite);
  }
  ~CInterface() override {
    zor_smart_config_stop(ender);
    if (suite != nullptr) zor_suite_free(suite);
    zor_suite_free(ender);
    zor_set_socket_hook(nullptr, nullptr, nullptr);
    zor_set_main_queue(nullptr, nullptr, nullptr);
    for (int worker = ZOR_WORKER_BROADCAST; worker <= ZOR_WORKER_SEARCH; ++worker) zor_worker_wait(worker);
  }

  /// Lets a module announce itself, and waits until the listener has decided on `count` lines.
  void announce(const std::string& id, int count) {
    module.send("xcmd_notify:0:mac=" + id + ",ver=1,cap=2,x=\xff", ZOR_C_ANNOUNCEMENT_PORT, "127.0.0.1");
    const auto decided = [&] {
      const zor_line_report lines = report().listener.received;
      return lines.reported + lines.repeats + lines.without_delegate + lines.dropped == count;
    };
    EXPECT_TRUE(waitUntil(decided, 2000)) << id;
  }

  zor_run_report report() const {
    zor_run_report report{};
    report.size = sizeof report;
    EXPECT_EQ(zor_smart_config_report(ender, &report), ZOR_OK);
    return report;
  }

  static zor_suite* create() {
    zor_suite* created = nullptr;
    zor_suite_create(&created);
    return created;
  }

  zor_suite* suite = nullptr;
  zor_suite* ender = create();  ///< Outlives `suite`.
  UdpPeer module{0, "127.0.0.1"};
};

TEST_F(CInterface, NullPointersAndBadArgumentsGiveAnErrorCode) {
  std::int32_t number = 0;
  std::array<std::uint8_t, 14> values{};
  zor_run_report run{};
  zor_search_report search{};
  zor_upgrade_report upgrade{};
  const std::int32_t nulls[] = {
      zor_suite_create(nullptr),
      zor_suite_free(nullptr),
      zor_suite_set_callbacks(nullptr, nullptr),
      zor_smart_config_v5_start(nullptr, "s", 1, "p", 1, 1),
      zor_smart_config_v5_start(suite, nullptr, 1, "p", 1, 1),
      zor_smart_config_v3_start(suite, "s", 1, nullptr, 1, 1),
      zor_smart_config_v5_append(nullptr, values.data(), 1),
      zor_smart_config_v5_append(suite, nullptr, 1),
      zor_smart_config_v5_set_property(suite, nullptr, 14),
      zor_smart_config_v5_mix_v3_enable(nullptr, 1),
      zor_smart_config_online_listen(nullptr, 1),
      zor_smart_config_stop(nullptr),
      zor_smart_config_progress(suite, nullptr),
      zor_smart_config_progress(nullptr, &number),
      zor_smart_config_status(nullptr),
      zor_make_port_record(1, nullptr),
      zor_device_search(nullptr),
      zor_device_search_set_property(nullptr, 1, 1),
      zor_device_upgrade(suite, nullptr, 1, "u", 1),
      zor_device_upgrade(nullptr, "1", 1, "u", 1),
      zor_device_upgrade_progress(suite, nullptr),
      zor_smart_config_report(nullptr, &run),
      zor_smart_config_report(suite, nullptr),
      zor_device_search_report(suite, nullptr),
      zor_device_upgrade_report(suite, nullptr),
      zor_post_to_main_queue(nullptr, nullptr, nullptr),
      zor_closure_run(nullptr),
      zor_closure_free(nullptr),
      zor_set_interface(nullptr, 1),
      zor_log_line(nullptr, 1),
      zor_get_tunable(0, nullptr),
      zor_find_pace(nullptr, 1, values.data()),
      zor_find_pace("fast", 4, nullptr),
      zor_pace_name(0, nullptr),
  };
  for (std::size_t i = 0; i < std::size(nulls); ++i) EXPECT_EQ(nulls[i], ZOR_ERROR_NULL) << i;
  zor_text name{};
  const zor_callbacks tooSmall = {sizeof(zor_callbacks) - 1, nullptr, User::destroy, nullptr, nullptr};
  const std::int32_t refused[] = {
      zor_suite_set_callbacks(suite, &tooSmall),
      zor_smart_config_v5_set_property(suite, values.data(), 13),
      zor_smart_config_report(suite, &run),
      zor_device_search_report(suite, &search),
      zor_device_upgrade_report(suite, &upgrade),
      zor_make_port_record(0, values.data()),
      zor_make_port_record(65536, values.data()),
      zor_worker_is_running(5),
      zor_worker_cancel(-1),
      zor_worker_wait(5),
      zor_set_interface("nowhere0", 8),
      zor_get_tunable(16, &number),
      zor_set_tunable(-1, 1),
      zor_find_pace("slow", 4, values.data()),
      zor_pace_name(-1, &name),
  };
  for (std::size_t i = 0; i < std::size(refused); ++i) EXPECT_EQ(refused[i], ZOR_ERROR_ARGUMENT) << i;
}

TEST_F(CInterface, CallbacksAreDestroyedOnceAndNeverOnAWorkersThread) {
  User first, second, third, refused;
  zor_callbacks callbacks = callbacksOf(refused);
  EXPECT_EQ(zor_suite_set_callbacks(nullptr, &callbacks), ZOR_ERROR_NULL);
  EXPECT_TRUE(refused.isGone());

  ASSERT_EQ(zor_smart_config_online_listen(suite, ZOR_C_ANNOUNCEMENT_PORT), ZOR_C_ANNOUNCEMENT_PORT);
  callbacks = callbacksOf(first);
  ASSERT_EQ(zor_suite_set_callbacks(suite, &callbacks), ZOR_OK);
  announce("A", 1);
  callbacks = callbacksOf(second);
  ASSERT_EQ(zor_suite_set_callbacks(suite, &callbacks), ZOR_OK);
  EXPECT_TRUE(first.isGone()) << "replaced while a callback was queued";
  EXPECT_EQ(zor_run_main_queue(0), 1);
  EXPECT_EQ(second.heard, (std::vector<std::string>{"A", "x=\xff"}));

  announce("B", 2);
  second.act = [&] {
    zor_callbacks next = callbacksOf(third);
    zor_suite_set_callbacks(suite, &next);
    EXPECT_EQ(second.destroyed, 0) << "destroyed during its own callback";
  };
  EXPECT_EQ(zor_run_main_queue(0), 1);
  EXPECT_TRUE(second.isGone());

  announce("C", 3);
  zor_suite_free(suite);
  suite = nullptr;
  EXPECT_TRUE(third.isGone()) << "freed while the listener ran and a callback was queued";
  EXPECT_EQ(zor_run_main_queue(0), 1);
  EXPECT_TRUE(third.heard.empty());
  announce("D", 4);
  EXPECT_EQ(report().listener.received.without_delegate, 1);
  EXPECT_EQ(report().listener.state, ZOR_STATE_RUNNING);
}

TEST_F(CInterface, ACallbackMayFreeItsSuite) {
  User user;
  const zor_callbacks callbacks = callbacksOf(user);
  zor_suite_set_callbacks(suite, &callbacks);
  zor_smart_config_online_listen(suite, ZOR_C_ANNOUNCEMENT_PORT);
  announce("A", 1);
  user.act = [&] { zor_suite_free(suite); };
  EXPECT_EQ(zor_run_main_queue(0), 1);
  suite = nullptr;
  EXPECT_TRUE(user.isGone());
}

TEST_F(CInterface, SeamsDestroyWhatTheyReplace) {
  const struct {
    const char* name;
    std::function<int(User&)> set;
    std::function<int(User&)> remove;
  } kSeams[] = {
      {"hook",
       [](User& user) { return zor_set_socket_hook([](void*, int32_t) { return 1; }, &user, User::destroy); },
       [](User& user) { return zor_set_socket_hook(nullptr, &user, User::destroy); }},
      {"sink", [](User& user) { return zor_set_log_sink([](void*, zor_text) {}, &user, User::destroy); },
       [](User& user) { return zor_set_log_sink(nullptr, &user, User::destroy); }},
      {"queue",
       [](User& user) {
         return zor_set_main_queue([](void*, zor_closure*) { return 0; }, &user, User::destroy);
       },
       [](User& user) { return zor_set_main_queue(nullptr, &user, User::destroy); }},
  };
  for (const auto& [name, set, remove] : kSeams) {
    User first, second, third;
    EXPECT_EQ(set(first), ZOR_OK) << name;
    EXPECT_EQ(set(second), ZOR_OK) << name;
    EXPECT_TRUE(first.isGone() && second.destroyed == 0) << name;
    EXPECT_EQ(remove(third), ZOR_OK) << name;
    EXPECT_TRUE(second.isGone() && third.isGone()) << name;
  }
}

TEST_F(CInterface, AHookThatIsReplacedWhileItRunsIsDestroyedAfterIt) {
  User hook;
  hook.act = [&] {
    zor_set_socket_hook(nullptr, nullptr, nullptr);
    EXPECT_EQ(hook.destroyed, 0);
  };
  const auto refuse = [](void* user, int32_t descriptor) {
    User::of(user).heard.push_back(descriptor >= 0 ? "socket" : "none");
    User::of(user).act();
    return 0;
  };
  ASSERT_EQ(zor_set_socket_hook(refuse, &hook, User::destroy), ZOR_OK);
  EXPECT_EQ(zor_smart_config_online_listen(suite, 0), ZOR_ERROR_SYSTEM);
  EXPECT_TRUE(hook.isGone());
  EXPECT_EQ(hook.heard, std::vector<std::string>{"socket"});
  EXPECT_EQ(report().listener.state, ZOR_STATE_NO_SOCKET);
  EXPECT_EQ(report().listener.error.number, EPERM);
}

TEST_F(CInterface, PostedWorkRunsOnceAndIsDestroyedWhereItRuns) {
  User user, full;
  std::thread([&] { EXPECT_EQ(zor_post_to_main_queue(User::call, &user, User::destroy), ZOR_OK); }).join();
  pollfd readable = {zor_main_queue_descriptor(), POLLIN, 0};
  EXPECT_EQ(poll(&readable, 1, 0), 1);
  EXPECT_EQ(user.destroyed, 0);
  EXPECT_EQ(zor_run_main_queue(1000), 1);
  EXPECT_TRUE(user.isGone());
  EXPECT_EQ(user.heard.size(), 1U);
  for (int i = 0; i < 1024; ++i) zor_post_to_main_queue(User::call, &user, nullptr);
  EXPECT_EQ(zor_post_to_main_queue(User::call, &full, User::destroy), ZOR_ERROR_SYSTEM);
  EXPECT_TRUE(full.isGone());
  EXPECT_EQ(zor_run_main_queue(0), 1024);
}

TEST_F(CInterface, TheApplicationsLoopRunsDropsOrRefusesClosures) {
  User user, ran, ranFirst, dropped, refused;
  std::vector<zor_closure*> taken;
  const auto take = [](void* list, zor_closure* closure) {
    static_cast<std::vector<zor_closure*>*>(list)->push_back(closure);
    return 1;
  };
  ASSERT_EQ(zor_set_main_queue(take, &taken, nullptr), ZOR_OK);
  EXPECT_EQ(zor_post_to_main_queue(User::call, &ran, User::destroy), ZOR_OK);
  EXPECT_EQ(zor_post_to_main_queue(User::call, &dropped, User::destroy), ZOR_OK);
  ASSERT_EQ(taken.size(), 2U);
  EXPECT_EQ(ran.destroyed + dropped.destroyed, 0);
  EXPECT_EQ(zor_closure_run(taken[0]), ZOR_OK);
  EXPECT_EQ(zor_closure_free(taken[1]), ZOR_OK);
  EXPECT_TRUE(ran.isGone() && dropped.isGone());
  EXPECT_TRUE(ran.heard.size() == 1 && dropped.heard.empty());

  const auto runElsewhere = [](void*, zor_closure* closure) {
    std::thread([closure] { zor_closure_run(closure); }).join();
    return 1;
  };
  ASSERT_EQ(zor_set_main_queue(runElsewhere, nullptr, nullptr), ZOR_OK);
  EXPECT_EQ(zor_post_to_main_queue(User::call, &ranFirst, User::destroy), ZOR_OK);
  EXPECT_TRUE(ranFirst.destroyed == 1 && !ranFirst.isGone()) << "destroyed on the thread that posted";

  zor_set_main_queue([](void*, zor_closure*) { return 0; }, nullptr, nullptr);
  EXPECT_EQ(zor_post_to_main_queue(User::call, &refused, User::destroy), ZOR_ERROR_SYSTEM);
  EXPECT_TRUE(refused.isGone() && refused.heard.empty());
  const zor_callbacks callbacks = callbacksOf(user);
  zor_suite_set_callbacks(suite, &callbacks);
  zor_smart_config_online_listen(suite, ZOR_C_ANNOUNCEMENT_PORT);
  announce("A", 1);
  zor_set_main_queue(nullptr, nullptr, nullptr);
  announce("A", 2);
  EXPECT_EQ(zor_run_main_queue(1000), 1) << "a refused report was recorded";
  EXPECT_EQ(report().listener.received.dropped, 1);
  zor_suite_set_callbacks(suite, nullptr);
}

TEST_F(CInterface, ReportsFitStructsOfOtherVersions) {
  struct Later {
    zor_run_report known;
    char added[16];
  } later;
  std::memset(&later, 0xff, sizeof later);
  later.known.size = sizeof later;
  ASSERT_EQ(zor_smart_config_online_listen(suite, 30000), 30000);
  ASSERT_EQ(zor_smart_config_report(suite, &later.known), ZOR_OK);
  EXPECT_EQ(later.known.size, sizeof later);
  EXPECT_EQ(later.known.listener.port, 30000);
  EXPECT_EQ(later.known.listener.state, ZOR_STATE_RUNNING);
  for (const char added : later.added) EXPECT_EQ(added, 0);
  later.known.size = static_cast<std::size_t>(-1);
  EXPECT_EQ(zor_smart_config_report(suite, &later.known), ZOR_ERROR_ARGUMENT);

  zor_search_report search{};
  search.size = sizeof search;
  zor_device_search_set_property(suite, 1, 3);
  zor_device_search(suite);
  zor_worker_wait(ZOR_WORKER_SEARCH);
  ASSERT_EQ(zor_device_search_report(suite, &search), ZOR_OK);
  EXPECT_EQ(search.state, ZOR_STATE_FINISHED);
  EXPECT_EQ(search.requests_sent, 3);

  zor_upgrade_report upgrade{};
  upgrade.size = sizeof upgrade;
  std::int32_t progress = 0;
  zor_device_upgrade(suite, "127.0.0.1", 9, "https://a/b", 11);
  zor_worker_wait(ZOR_WORKER_UPGRADE);
  ASSERT_EQ(zor_device_upgrade_report(suite, &upgrade), ZOR_OK);
  EXPECT_EQ(upgrade.state, ZOR_STATE_FINISHED);
  EXPECT_EQ(zor_device_upgrade_progress(suite, &progress), ZOR_OK);
  EXPECT_EQ(progress, -111);
}

TEST_F(CInterface, StartsTakeTextsByTheirLength) {
  User log;
  const auto keep = [](void* user, zor_text line) {
    User::of(user).heard.emplace_back(line.bytes, line.length);
  };
  zor_set_log_sink(keep, &log, nullptr);
  const std::uint8_t data[] = {1, 2};
  EXPECT_EQ(zor_smart_config_v5_append(suite, data, 2), ZOR_OK);
  EXPECT_EQ(zor_smart_config_v5_start(suite, "home!", 4, "p\xff!", 2, 0), ZOR_OK);
  zor_worker_wait(ZOR_WORKER_MULTICAST);
  zor_worker_wait(ZOR_WORKER_BROADCAST);
  EXPECT_EQ(zor_smart_config_v3_start(suite, nullptr, 0, "secret!", 6, 0), ZOR_OK);
  zor_worker_wait(ZOR_WORKER_MULTICAST);
  zor_log_line("own!", 3);
  zor_set_log_sink(nullptr, nullptr, nullptr);
  EXPECT_EQ(log.heard, (std::vector<std::string>{"start smart v5, ssid=home, pass=p\xff, append 2 byte",
                                                 "start smart v3, ssid=, pass=secret", "own"}));
  std::int32_t progress = 0;
  std::int32_t status = -1;
  EXPECT_EQ(zor_smart_config_progress(suite, &progress), ZOR_OK);
  EXPECT_EQ(zor_smart_config_status(&status), ZOR_OK);
  EXPECT_EQ(progress, 100);
  EXPECT_EQ(status, 0);
}

TEST_F(CInterface, PacesTunablesAndPortRecord) {
  std::array<std::uint8_t, 14> values{};
  ASSERT_EQ(zor_find_pace("default", 7, values.data()), ZOR_OK);
  EXPECT_EQ(values, (std::array<std::uint8_t, 14>{30, 30, 100, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5}));
  zor_text name{};
  int paces = 0;
  for (; zor_pace_name(paces, &name) == ZOR_OK; ++paces) {
    EXPECT_EQ(zor_find_pace(name.bytes, name.length, values.data()), ZOR_OK) << name.bytes;
  }
  EXPECT_GT(paces, 2);

  std::array<std::uint8_t, 14> different{};
  for (std::size_t i = 0; i < different.size(); ++i) different[i] = static_cast<std::uint8_t>(i + 1);
  ASSERT_EQ(zor_smart_config_v5_set_property(suite, different.data(), different.size()), ZOR_OK);
  zor_device_search_set_property(suite, 16, 15);
  for (int tunable = 0; tunable < 16; ++tunable) {
    std::int32_t value = 0;
    EXPECT_EQ(zor_get_tunable(tunable, &value), ZOR_OK);
    EXPECT_EQ(value, tunable + 1);
    EXPECT_EQ(zor_set_tunable(tunable, -5), ZOR_OK);
    EXPECT_EQ(zor_get_tunable(tunable, &value), ZOR_OK);
    EXPECT_EQ(value, -5);
  }
  std::uint8_t record[3];
  ASSERT_EQ(zor_make_port_record(25011, record), ZOR_OK);
  EXPECT_EQ(std::memcmp(record, "\x01\xb3\x61", 3), 0);
  EXPECT_EQ(zor_version(), ZOR_C_VERSION);
}

}  // namespace
