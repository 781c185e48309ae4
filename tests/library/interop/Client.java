// SPDX-License-Identifier: Apache-2.0

// The client in Java. interop_test.py says what its commands do.

import com.google.protobuf.CodedOutputStream;
import com.google.protobuf.InvalidProtocolBufferException;
import com.google.protobuf.Message;
import java.io.IOException;
import java.io.PrintStream;
import java.util.HexFormat;
import java.util.List;
import java.util.Scanner;
import ui.vok.rulecheck.pb.RuleService.*;

public final class Client {
  private static final HexFormat HEX = HexFormat.of();

  private static String copy(String type, byte[] data) throws ReflectiveOperationException {
    Class<?> generated = Class.forName("ui.vok.rulecheck.pb.RuleService$" + type);
    Message instance = (Message) generated.getMethod("getDefaultInstance").invoke(null);
    Message message;
    try {
      message = instance.getParserForType().parsePartialFrom(data);
    } catch (InvalidProtocolBufferException error) {
      return "unreadable: " + error;
    }
    try {
      byte[] bytes = new byte[message.getSerializedSize()];
      CodedOutputStream out = CodedOutputStream.newInstance(bytes);
      out.useDeterministicSerialization();
      message.writeTo(out);
      return HEX.formatHex(bytes);
    } catch (IOException | RuntimeException error) {
      return "unwritable: " + error;
    }
  }

  private static Request request() {
    Request.Builder request = Request.newBuilder().setType(Request.RequestType.CREATE_VIOLATION);
    CreateViolation.Builder body = request.getCreateViolationBuilder();
    body.setRuleKey("WIDTH").setSessionUuid("s-1");
    body.setSeverity(Violation.Severity.SEV_CRITICAL_WARNING);
    Reference.Builder port = body.getArgsBuilder().addArgBuilder().getRefBuilder();
    port.setType(Reference.RefType.PORT).setName("clk").setId(-1);
    body.getArgsBuilder().addArgBuilder().getScalarBuilder().setIntVal(-9007199254740993L);
    body.getArgsBuilder().addArgBuilder().setStringVal("naïve – ✓ 🙂");
    body.getActualValueBuilder().setDoubleVal(187.5);
    body.getThresholdValueBuilder().setIntVal(9223372036854775807L);
    body.putDynamicCategoryValues("7", "team α");
    return request.build();
  }

  private static List<Object> values(Violation found) {
    List<Arg> args = found.getDetails().getArgs().getArgList();
    Resource url = found.getExamples().getUri(0).getUrl();
    Reference port = args.get(0).getRef();
    Scalar actual = found.getActualValue();
    return List.of(
        found.getSeverity().getNumber(), found.getRuleKey(), found.hasBuildTarget() ? 1 : 0,
        url.getScheme().getNumber(), url.getHost(), actual.getDoubleVal(),
        actual.hasIntVal() ? 1 : 0, found.getThresholdValue().getIntVal(),
        port.getType().getNumber(), port.getName(), port.getId(),
        args.get(1).getScalar().getIntVal(), args.get(2).getStringVal(),
        found.getCategoriesCount(), found.getCategoriesOrThrow(-1), found.getCategoriesOrThrow(7));
  }

  public static void main(String[] arguments) throws IOException, ReflectiveOperationException {
    PrintStream out = new PrintStream(System.out, true, "UTF-8");
    if (arguments[0].equals("copy")) {
      Scanner lines = new Scanner(System.in);
      while (lines.hasNextLine()) {
        String[] words = lines.nextLine().split(" ");
        out.println(copy(words[0], HEX.parseHex(words.length > 1 ? words[1] : "")));
      }
    } else if (arguments[0].equals("request")) {
      request().writeTo(out);
    } else {
      values(Response.parseFrom(System.in).getViolation()).forEach(out::println);
    }
  }
}
