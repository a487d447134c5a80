# A notification service as clusters have it; READINGS says what it gives.
export LD_LIBRARY_PATH=$NTF_DOUBLE DOUBLE=real READINGS
