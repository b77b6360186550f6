import type { CalibrationAnswer, Parameter } from "@/api/types";
import { fixed } from "@/lib/text";
import { parameterTexts } from "./known_parameters";

/** The camera as it was found, and how well. */
export function AnswerView({ answer }: { answer: CalibrationAnswer }) {
    return (
        <section className="card" aria-label="Answer">
            <h2>The camera</h2>
            {answer.warnings.length > 0 && (
                <ul className="notice warning">
                    {answer.warnings.map((warning) => (
                        <li key={warning}>{warning}</li>
                    ))}
                </ul>
            )}
            {answer.horizon === null && <p className="hint">The horizon lies outside the picture.</p>}
            <div className="table">
                <table>
                    <thead>
                        <tr>
                            <th>Parameter</th>
                            <th className="number">Value</th>
                            <th className="number">Standard error</th>
                        </tr>
                    </thead>
                    <tbody>
                        {(Object.keys(parameterTexts) as Parameter[]).map((name) => (
                            <tr key={name}>
                                <td>{parameterTexts[name].name}</td>
                                <td className="number">
                                    {fixed(answer.calibration[name], 2)} {parameterTexts[name].unit}
                                </td>
                                <td className="number">{fixed(answer.standard_errors[name], 2)}</td>
                            </tr>
                        ))}
                    </tbody>
                </table>
            </div>
        </section>
    );
}
