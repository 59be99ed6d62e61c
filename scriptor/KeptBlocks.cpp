#include "KeptBlocks.h"

#include <atomic>
#include <cstring>
#include <new>

namespace quorlua::kept {
namespace {

struct Node {
    char* block;
    Node* next;
};

// A list that only grows at its head needs no lock and no destructor.
std::atomic<Node*> head;

} // namespace

char* find(const char* text)
{
    for (const Node* node = head.load(std::memory_order_acquire); node; node = node->next)
        if (std::strcmp(node->block, text) == 0) return node->block;
    return nullptr;
}

bool holds(const char* block)
{
    for (const Node* node = head.load(std::memory_order_acquire); node; node = node->next)
        if (node->block == block) return true;
    return false;
}

bool keep(char* block)
{
    if (!block || holds(block)) return true;
    auto* node = new (std::nothrow) Node{block, head.load(std::memory_order_relaxed)};
    if (!node) return false;
    while (
        !head.compare_exchange_weak(node->next, node, std::memory_order_release, std::memory_order_relaxed)) {
    }
    return true;
}

} // namespace quorlua::kept
