// Measures how large the shared library is, what it exports, and how much stack each of its workers uses.

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

#include "ZOR/ZorSuite.h"
#include "bench/support/ElfFile.h"
#include "bench/support/ListenerUnderTest.h"
#include "bench/support/PaintedStacks.h"
#include "bench/support/Program.h"
#include "bench/support/SampleRun.h"
#include "bench/support/Statistics.h"
#include "bench/support/UpgradingModule.h"

namespace zor::bench {
namespace {

/// True for instances of the standard library's templates, which the compiler puts into the library.
bool isStandard(const std::string& name) {
  return name.rfind("std::", 0) == 0 || name.find(" for std::") != std::string::npos;
}

Row makeSizeRow(const char* name, const ElfFile& file, const ElfFile& baseline) {
  const auto standard = std::count_if(file.exports.begin(), file.exports.end(), isStandard);
  constexpr double kKibibyte = 1024;
  return {{"library", name},
          {"file KiB", static_cast<double>(file.fileBytes) / kKibibyte},
          {"code KiB", static_cast<double>(file.codeBytes) / kKibibyte},
          {"data bytes", file.dataBytes},
          {"bss bytes", file.bssBytes},
          {"exports", file.exports.size()},
          {"std exports", standard},
          {"file to baseline",
           ratio(static_cast<double>(file.fileBytes), static_cast<double>(baseline.fileBytes))}};
}

Table sizeTable(const ElfFile& library, const ElfFile& baseline) {
  Table table("size", "The stripped shared library; baseline: the same sources with every symbol exported");
  table.add(makeSizeRow("libZorSuite", library, baseline));
  table.add(makeSizeRow("baseline", baseline, baseline));
  return table;
}

void pause() {
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

/// Returns after both senders have sent every kind of frame, version 3 too.
void provision(ZorSuite& suite) {
  suite.SmartConfigV5_MixV3Enable(1);
  suite.SmartConfigV5_Start(kSsid, kPassPhrase, 1000);
  waitForSenders();
}

void provisionVersion3(ZorSuite& suite) {
  suite.SmartConfigV3_Start(kSsid, kPassPhrase, 500);
  waitForSenders();
}

/// Returns after the listener has read every kind of line and has reported a module.
void listen() {
  Listener listener;
  listener.suite.setDelegate(std::make_shared<CountingDelegate>());
  for (const LineKind kind : {LineKind::fresh, LineKind::repeat, LineKind::garbage})
    listener.load->sendAll(kind, 64);
  ZorRunMainQueue(1000);
}

void search(ZorSuite& suite) {
  suite.DeviceSearchSetProperty(20, 5);
  suite.DeviceSearch();
  s_threadDeviceSearch.waitUntilEmpty();
}

void upgrade(ZorSuite& suite) {
  suite.DeviceUpgrade(UpgradingModule::kIp, "http://10.77.0.1/firmware.bin");
  s_threadUpgrade.waitUntilEmpty();
}

/// Runs `activity` and adds a row for each of the `workers` that it starts, in their order.
template <class Activity>
void addStackRows(Table& table, std::size_t emptyThread, const std::vector<const char*>& workers,
                  Activity activity) {
  const std::size_t first = threadsStarted();
  activity();
  pause();  // A worker empties its handle a little before its thread ends.
  for (std::size_t i = 0; i < workers.size(); ++i) {
    const std::size_t used = stackUsed(first + i);
    table.add({{"worker", workers[i]},
               {"stack bytes", used},
               {"empty thread bytes", emptyThread},
               {"to empty thread", ratio(static_cast<double>(used), static_cast<double>(emptyThread))}});
  }
}

Table stackTable() {
  // The second thread counts: the first also resolves the C library's functions.
  for (int thread = 0; thread < 2; ++thread) std::thread([] {}).join();
  const std::size_t emptyThread = stackUsed(1);
  UpgradingModule module;
  module.finish();
  ZorSuite suite;
  Table table("stack",
              "Stack that the workers use, the C library's part included; baseline: an empty thread");
  addStackRows(table, emptyThread, {"broadcast sender", "multicast sender"}, [&] { provision(suite); });
  addStackRows(table, emptyThread, {"idle listener", "version 3 sender"}, [&] { provisionVersion3(suite); });
  addStackRows(table, emptyThread, {"listener"}, listen);
  addStackRows(table, emptyThread, {"search"}, [&] { search(suite); });
  addStackRows(table, emptyThread, {"upgrade"}, [&] { upgrade(suite); });
  return table;
}

}  // namespace

void runBenchmark(Program& program) {
  std::string library;
  std::string baseline;
  bool listExports = false;
  program.options().add_option("--library", library, "The stripped shared library")->required();
  program.options()
      .add_option("--baseline", baseline, "The same library with every symbol exported")
      ->required();
  program.options().add_flag("--exports", listExports, "List the exported symbols instead");
  program.parse("Size and exports of the shared library, and stack use of its workers");
  const ElfFile file = readElfFile(library);
  if (listExports) {
    for (const std::string& name : file.exports) std::cout << name << "\n";
    return;
  }
  Program::prepareToSend();
  program.print(sizeTable(file, readElfFile(baseline)));
  program.print(stackTable());
}

}  // namespace zor::bench
