#pragma once

/// What a console program asks of the terminal that it may be started from.
namespace os {

enum class Stream { output, error };

/// True when the stream is a terminal that obeys escape sequences; on Windows it is made to.
bool isTerminal(Stream stream);

}  // namespace os
