// Running programs for hosts' ExecCommand.
#ifndef KOLUM_BASE_EXEC_COMMAND_H
#define KOLUM_BASE_EXEC_COMMAND_H

namespace kolum {

// ARGV begins with the program and ends with null. Returns the exit code, or with !WANTSEXITCODE
// whether it was not 0; 1 if a signal ended the program, 0 if it could not be started. There is no
// time limit: hosts run long tools with it.
int execCommand(const char** argv, bool wantsExitCode);

}  // namespace kolum

#endif
