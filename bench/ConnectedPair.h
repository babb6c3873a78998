// Connections to measure on: one through the library and one without it, both TCP on loopback and
// both between sockets of this process.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Socket.h>

// Two sockets of the library that are connected to each other.
struct LibraryPair {
    LibraryPair();

    VelBase::ReturnPtrI<VelNet::Socket> client;
    VelBase::ReturnPtrI<VelNet::Socket> server;
};

// Two descriptors that are connected to each other. Throws std::system_error.
struct BarePair {
    BarePair();
    ~BarePair();
    BarePair(const BarePair&) = delete;
    BarePair& operator=(const BarePair&) = delete;

    int client;
    int server = -1;
};
