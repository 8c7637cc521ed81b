#include <kolum/host.h>

int IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 1 : 0;
}
