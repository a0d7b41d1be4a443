#pragma once

namespace quorl {

/// Digit alphabets of module identifiers. The blank is digit 0, so each has one symbol more than its name says.
inline constexpr char BASE36_UPPER_CHARS[] = " 0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
inline constexpr char BASE36_LOWER_CHARS[] = " 0123456789abcdefghijklmnopqrstuvwxyz";
/// The alphabets a module identifier's two parts may start with.
inline constexpr char BASE26_UPPER_CHARS[] = " ABCDEFGHIJKLMNOPQRSTUVWXYZ";
inline constexpr char BASE26_LOWER_CHARS[] = " abcdefghijklmnopqrstuvwxyz";

}
