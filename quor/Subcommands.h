#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace quor {

/// Puts what a subcommand does, when it is the one that was asked for, into `action`; it throws `Failure` or
/// `Ended`.
using Action = std::function<void()>;

void addAsk(CLI::App& program, Action& action);
void addBatch(CLI::App& program, Action& action);
void addCall(CLI::App& program, Action& action);
void addConfig(CLI::App& program, Action& action);
void addDraw(CLI::App& program, Action& action);
void addKeypoints(CLI::App& program, Action& action);

} // namespace quor
