#include "drivers/sip/sip_replies.h"

namespace kelmio {

void ReplyOutsideCalls(sip& stack, const sip_msg& request) {
  if (pl_strcmp(&request.met, "ACK") == 0)
    return; // never answered (RFC 3261 17.1.1.3)
  if (pl_strcmp(&request.met, "CANCEL") == 0) {
    sip_reply(&stack, &request, 481, "Transaction Does Not Exist");
    return;
  }
  if (pl_strcmp(&request.met, "OPTIONS") == 0) {
    sip_replyf(&stack, &request, 200, "OK", "%sAccept: application/sdp\r\nContent-Length: 0\r\n\r\n", kAllowHeader);
    return;
  }
  sip_replyf(&stack, &request, 405, "Method Not Allowed", "%sContent-Length: 0\r\n\r\n", kAllowHeader);
}

} // namespace kelmio
