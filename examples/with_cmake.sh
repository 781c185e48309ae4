cmake -S . -B build -D CMAKE_PREFIX_PATH="$HOME/rulecheck"
cmake --build build
