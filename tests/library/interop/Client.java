// SPDX-License-Identifier: Apache-2.0

// The client in Java. README.md says what its commands do.

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

  private static Request rule() {
    RuleSpec.Builder spec =
        RuleSpec.newBuilder()
            .setKey("WIDTH")
            .setFullName("Width of a bus")
            .setRawMsg("%1 has %2: %3")
            .setSeverity(Violation.Severity.SEV_WARNING)
            .putCategories(-1, "unsorted")
            .putDynamicCategories(7, true);
    Link.Builder link = spec.getExamplesBuilder().addUriBuilder().setLinkText("manual");
    link.getUrlBuilder().setScheme(Resource.Scheme.HTTPS).setHost("host.example");
    Request.Builder request = Request.newBuilder().setType(Request.RequestType.UPSERT_RULESPEC);
    request.getUpsertRulespecBuilder().setRuleSpec(spec);
    return request.build();
  }

  private static Request session() {
    Request.Builder request = Request.newBuilder().setType(Request.RequestType.START_SESSION);
    request.getStartSessionBuilder().setName("nightly").setPid(4711).setUuid("s-1");
    Resource.Builder file = request.getStartSessionBuilder().getReportFileBuilder();
    file.setScheme(Resource.Scheme.FILE).setPath("/reports/nightly.html");
    return request.build();
  }

  private static Request violation() {
    Request.Builder request = Request.newBuilder().setType(Request.RequestType.CREATE_VIOLATION);
    CreateViolation.Builder body = request.getCreateViolationBuilder();
    body.setRuleKey("WIDTH").setSessionUuid("s-1");
    body.setSeverity(Violation.Severity.SEV_CRITICAL_WARNING);
    Reference.Builder port = body.getArgsBuilder().addArgBuilder().getRefBuilder();
    port.setType(Reference.RefType.PORT).setName("clk").setId(-1);
    body.getArgsBuilder().addArgBuilder().getScalarBuilder().setIntVal(-9007199254740993L);
    body.getArgsBuilder().addArgBuilder().setStringVal("naïve – ✓ 🙂");
    body.getActualValueBuilder().setDoubleVal(187.5).setUnits("MHz");
    body.getThresholdValueBuilder().setIntVal(9223372036854775807L);
    body.putDynamicCategoryValues("7", "team α");
    return request.build();
  }

  private static int number(boolean isSet) {
    return isSet ? 1 : 0;
  }

  private static List<Object> values(Response stored, Session opened, Violation found) {
    List<Arg> args = found.getDetails().getArgs().getArgList();
    Resource url = found.getExamples().getUri(0).getUrl();
    Reference port = args.get(0).getRef();
    Scalar actual = found.getActualValue();
    return List.of(
        stored.getType().getNumber(), stored.getStatus().getCode(), stored.getStatus().getMsg(),
        number(stored.hasError()), opened.getName(), opened.getTimestamp(),
        opened.getReportFile().getPath(), number(opened.hasDescription()),
        found.getSeverity().getNumber(), found.getRuleKey(), number(found.hasBuildTarget()),
        url.getScheme().getNumber(), url.getHost(), actual.getDoubleVal(), actual.getUnits(),
        number(actual.hasIntVal()), found.getThresholdValue().getIntVal(),
        found.getDetails().getText(), port.getType().getNumber(), port.getName(), port.getId(),
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
    } else if (arguments[0].equals("requests")) {
      for (Request request : List.of(rule(), session(), violation())) {
        request.writeDelimitedTo(out);
      }
    } else {
      Response stored = Response.parseDelimitedFrom(System.in);
      Session opened = Response.parseDelimitedFrom(System.in).getSession();
      Violation found = Response.parseDelimitedFrom(System.in).getViolation();
      values(stored, opened, found).forEach(out::println);
    }
  }
}
