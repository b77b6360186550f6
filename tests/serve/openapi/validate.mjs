// Validates the OpenAPI document whose path is given, and each example in it against its schema.
import { readFileSync } from "node:fs";
import { Validator } from "@seriousme/openapi-schema-validator";
import Ajv from "ajv/dist/2020.js";

const document = JSON.parse(readFileSync(process.argv[2], "utf8"));
const faults = [];

const { valid, errors } = await new Validator().validate(structuredClone(document));
if (!valid) faults.push(`it is no OpenAPI document: ${JSON.stringify(errors, null, 2)}`);

const ajv = new Ajv({ strict: false, formats: { "date-time": true } });
ajv.addSchema({ ...document, $id: "http://document.invalid/openapi.json" });

/** Checks a value against the schema at a JSON pointer of the document. */
function check(pointer, value, isWrong) {
    const validate = ajv.compile({ $ref: `http://document.invalid/openapi.json#${pointer}` });
    if (validate(value) === isWrong)
        faults.push(`${pointer}: ${isWrong ? "the wrong example fits" : ajv.errorsText(validate.errors)}`);
}

let count = 0;
/** Looks for examples beside schemas, from a part of the document down. */
function walk(part, pointer) {
    if (typeof part !== "object" || part === null) return;
    if (part.schema !== undefined && part.example !== undefined) {
        count += 1;
        check(`${pointer}/schema`, part.example, false);
    }
    // The right ones fit; of the wrong ones some are wrong only to the server.
    for (const [name, example] of Object.entries(part.schema === undefined ? {} : (part.examples ?? {}))) {
        count += 1;
        if (name !== "wrong") check(`${pointer}/schema`, example.value, false);
    }
    for (const [name, inner] of Object.entries(part))
        if (name !== "example" && name !== "examples")
            walk(inner, `${pointer}/${encodeURIComponent(name.replaceAll("~", "~0").replaceAll("/", "~1"))}`);
}
walk(document, "");
if (count === 0) faults.push("there are no examples");

for (const fault of faults) console.error(fault);
console.log(`${count} examples`);
process.exitCode = faults.length === 0 ? 0 : 1;
