/*
 * Prints the document of each file, one JSON object a line.
 *
 *   describe FILE...
 */
#include <kolum/describe.h>
#include <stdio.h>

int main(int argc, char** argv) {
  int i;
  int failed = 0;
  for (i = 1; i < argc; ++i) {
    char* document = NULL;
    if (KoLUM_Describe(argv[i], NULL, &document) != KOLUM_DESCRIBED) failed = 1;
    if (document != NULL) puts(document);
    KoLUM_FreeText(document);
  }
  return failed;
}
