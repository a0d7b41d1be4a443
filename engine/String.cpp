#include "engine/String.h"

namespace quorl {

void String::Trim(std::string& text, std::string const& characters) {
    auto last = text.find_last_not_of(characters);
    if (last == std::string::npos) {
        text.clear();
        return;
    }
    text.erase(last + 1);
    text.erase(0, text.find_first_not_of(characters));
}

}
