// How wide the board's bus is.
`define DATA_BITS 32
