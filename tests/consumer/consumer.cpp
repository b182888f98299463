// A client of the installed library: one header, exported names only.
#include <zuutl.h>

#include <cstdio>
#include <cstring>

class Client : public ZuObject {
 public:
  int value = 7;
};

int main() {
  mdsPerTaskInit();
  Client* c = new Client;
  if (c == nullptr || c->value != 7 || c->compare(nullptr) != 0) return 1;
  void* block = ramAlloc(100);
  if (block == nullptr || ramSize(block) != 100) return 2;
  if (ramResize(&block, 1000) != ZU_OK || ramSize(block) != 1000) return 3;
  ZuSemaphore lock;
  lock.lock();
  lock.unlock();
  ramFree(block);
  {
    ZuScanner scanner(reinterpret_cast<const unsigned char*>("a<=b"));
    scanner.parenBlocks = 1;
    ZuToken token;
    scanner.getToken(token, ZU_SEARCH_NORMAL);
    scanner.getToken(token, ZU_SEARCH_NORMAL);
    if (token.getType() != '<' * 256u + '=' || token.getOffset() != 1) return 5;
  }
  delete c;
  {
    // Containers, each through its exported operations.
    ZuArray array;
    if (array.append(nullptr) != ZU_OK || array.capacity != 16) return 5;
    ZuDictionary hashed;
    ZuSeqDictionary ordered;
    static const unsigned char name[] = "DSN";
    ZuSubString* key = new ZuSubString(name, 3);
    if (hashed.initialize(4) != ZU_OK || hashed.addAssoc(1u, 2u) != ZU_OK) return 6;
    if (ordered.addAssoc(key, nullptr) != ZU_OK || hashed.getIntForKey(1u) != 2) return 7;
    ordered.setIgnoreCase();
    ZuSubString probe(reinterpret_cast<const unsigned char*>("dsn"), 3);
    if (ordered.doesExist(&probe) != 1) return 8;
    ordered.deleteKeyAndData();
    ZuBitArray bits;
    if (bits.initialize(9) != ZU_OK) return 9;
    bits.set(8);
    if (bits.test(8) != 1) return 10;
  }
  if (mdsGetPerTaskData(TASK_DATA_RAM_HEAP) != nullptr) return 4;
  mdsPerTaskTerm();
  std::printf("consumer: ok\n");
  return 0;
}
