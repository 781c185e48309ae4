cmake -S apps -B build/apps -D CMAKE_PREFIX_PATH="$HOME/rulecheck"
cmake --build build/apps --target rulecheck
PATH=$PWD/build/apps/rulecheck:$PATH
