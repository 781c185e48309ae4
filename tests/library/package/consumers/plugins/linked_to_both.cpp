// A program that links two libraries that both link ours.

extern "C" const void* third();
extern "C" const void* fourth();

int main() {
  return third() != nullptr && third() == fourth() ? 0 : 1;
}
