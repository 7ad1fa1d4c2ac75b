#pragma once

// Calls of zbctl's readers and writers for the fuzz targets of its parsers. Some of these take
// a list for their warnings beside their argument; CallWithWarnings passes a fresh one when
// the function asks for it, so that the targets call either form.

namespace TesselFX {
namespace fuzz {

template <typename Result, typename Argument>
Result CallWithWarnings(Result (*function)(const Argument&), const Argument& argument) {
    return function(argument);
}

template <typename Result, typename Argument, typename Warnings>
Result CallWithWarnings(Result (*function)(const Argument&, Warnings&), const Argument& argument) {
    Warnings warnings;
    return function(argument, warnings);
}

}  // namespace fuzz
}  // namespace TesselFX
