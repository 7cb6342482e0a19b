// A library that loads but has no entry point: the player must pass it by.
extern "C" int SomethingElse() {
  return 0;
}
