# wkd_precompila(TARGET [header...])
#
# The standard headers that most files include, and those named, are parsed once for a target instead of once a file.
# Every file still includes what it uses: a compiler without precompiled headers builds it as well.
function(wkd_precompila alvo)
    target_precompile_headers(${alvo} PRIVATE <algorithm> <chrono> <filesystem> <fstream> <functional> <map> <memory>
                              <optional> <set> <sstream> <string> <unordered_map> <variant> <vector> ${ARGN})
endfunction()
