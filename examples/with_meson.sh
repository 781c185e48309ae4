meson setup build --pkg-config-path "$HOME/rulecheck/lib/pkgconfig"
meson compile -C build
