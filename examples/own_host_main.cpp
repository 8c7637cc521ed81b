// Reads a configuration that does not exist, to show where the library's messages go.
#include <kolum/kolum.h>

int main() {
  lumCfg_s config;
  return parseConfig(&config) == 1 ? 0 : 1;
}
