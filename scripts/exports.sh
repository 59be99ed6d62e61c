## exports [PRESET]   takes over what the libraries of a build (dev) export as the lists that a test compares

preset=${1:-dev}
libraries=(KxGeBasic BaseObj QuorCommon QuorMsgHandle QuorPureScriptor QuorPrimary QuorScriptor)
build "$preset" "${libraries[@]/#/exports_of_}"
system=linux
[[ ! -e build/$preset/bin/QuorScriptor.dll ]] || system=windows
for library in "${libraries[@]}"; do
    cp "build/$preset/exports/$library.txt" "tests/layers/exports/$library.$system.txt"
done
git --no-pager diff --stat -- tests/layers/exports 2>/dev/null || true # a copy without a repository will do
