#include "errors/message.h"

#include "errors/catalogue.h"
#include "errors/keeper.h"

void loadMessage(char* buffer, unsigned short id) {
  zu::catalogueLoad(id, reinterpret_cast<unsigned char*>(buffer), ZuMessageText::kSize);
}

ZuMessageText::ZuMessageText(unsigned short id) {
  text_[0] = 0;
  loadMessage(reinterpret_cast<char*>(text_), id);
}

ZuError& addMessageError(unsigned short id) {
  const ZuMessageText message(id);
  return ZuErrorKeeper::addError(
      new ZuError(id, message.getText(), ZU_ERROR_TYPE_ERROR, 0, 0));
}

ZuError& appendMessageToLastError(unsigned short id) {
  const ZuMessageText message(id);
  return ZuErrorKeeper::appendTextToLastError(message.getText());
}
