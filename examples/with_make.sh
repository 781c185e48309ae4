PKG_CONFIG_PATH="$HOME/rulecheck/lib/pkgconfig" make
