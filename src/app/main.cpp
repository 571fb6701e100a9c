#include <iostream>

int main(int argc, char** argv) {
  (void)argc;
  (void)argv;
  std::cout << "glmixfit " << GLMIX_VERSION << "\n";
  return 0;
}
