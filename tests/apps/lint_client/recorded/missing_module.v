module missing_module(input a);
  absent u_absent (.a(a));
endmodule
