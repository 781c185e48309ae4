cmake -S . -B build -D CMAKE_PREFIX_PATH="$HOME/rulecheck"
cmake --build build --target first_report
build/first_report                 # writes result.pb
rulecheck html result.pb -o report.html  # open it in a browser
