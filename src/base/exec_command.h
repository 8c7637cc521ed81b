// Running a program as hosts do through ExecCommand.
#ifndef KOLUM_BASE_EXEC_COMMAND_H
#define KOLUM_BASE_EXEC_COMMAND_H

namespace kolum {

// ARGV begins with the program and ends with null. The exit code, or with !WANTSEXITCODE whether
// there was one; 1 when a signal ended it, 0 when it could not be started. There is no limit of
// time: hosts run long tools by it.
int execCommand(const char** argv, bool wantsExitCode);

}  // namespace kolum

#endif
