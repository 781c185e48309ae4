cmake -S apps -B build/apps -D CMAKE_PREFIX_PATH="$HOME/rulecheck"
cmake --build build/apps --target html_report
PATH=$PWD/build/apps/html_report:$PATH
