#include "cli/Generate.h"

#include <map>

namespace zor::cli {
namespace {

using Generator = std::string (*)(const CommandOutline&);

const std::map<std::string, Generator> kGenerators = {
    {"man", manualPage}, {"bash", bashCompletion}, {"zsh", zshCompletion}, {"fish", fishCompletion}};

}  // namespace

void addGenerateOption(CLI::App& app, std::string& kind) {
  app.add_option("--generate", kind)->group("")->check(CLI::IsMember(kGenerators));
}

std::string generate(const CLI::App& app, const std::string& kind) {
  return kGenerators.at(kind)(outlineOf(app));
}

}  // namespace zor::cli
