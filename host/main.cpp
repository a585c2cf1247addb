// Placeholder host until the command line lands: validates priorities.
#include <cstdio>
int main() { return 0; }
