module syntax(input a, output b);
  assign b = `NOT_DEFINED;
  assign = a;
endmodule
