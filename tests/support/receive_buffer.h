// How large a receive buffer this system grants to a UDP socket.
#pragma once

// Asks for `octets` on a socket of its own and returns what the system says it granted; 0 without a socket.
int GrantedReceiveBuffer(int octets);

// The same without asking.
int DefaultReceiveBuffer();
