#pragma once

/// Texts that stay allocated for the life of the process, because pointers to them were handed out. They stay
/// reachable, and any thread may keep one at any time. Whoever needs a kept text again takes the copy that is
/// there, so that their number does not grow with use.
namespace quorlua::kept {

/// The kept copy of a text; null when there is none.
char* find(const char* text);

/// Whether this very block is kept.
bool holds(const char* block);

/// Takes over a block made by `malloc`; a null one is nothing to do. False, and the block is still the
/// caller's, when memory runs out.
bool keep(char* block);

} // namespace quorlua::kept
