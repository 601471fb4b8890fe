#pragma once

// The commands of the `narv` program besides starting it (`narv status`,
// `narv pause`, ...): each one a client of the running Narv's control
// interface (ControlService). None of them starts a Narv.
namespace ControlCommand {
// Runs the command in argv[1] and its options; returns the exit code: 0 done,
// 1 no Narv to ask or it refused, 2 bad arguments.
int run(int argc, char **argv);
} // namespace ControlCommand
