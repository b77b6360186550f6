import type { Parameter } from "@/api/types";
import type { Fixed } from "./marks";

export const parameterTexts: Record<Parameter, { name: string; unit: string }> = {
    tilt: { name: "Tilt", unit: "\u00b0" },
    roll: { name: "Roll", unit: "\u00b0" },
    height_m: { name: "Height", unit: "m" },
    vertical_fov: { name: "Vertical field of view", unit: "\u00b0" },
};

interface Props {
    fixed: Fixed;
    clickError: string;
    onFixed: (fixed: Fixed) => void;
    onClickError: (text: string) => void;
}

/** What is known of the camera without any marks. */
export function KnownParameters({ fixed, clickError, onFixed, onClickError }: Props) {
    return (
        <details className="card">
            <summary>What is known already</summary>
            <div className="known">
                {(Object.keys(parameterTexts) as Parameter[]).map((name) => (
                    <label key={name}>
                        {parameterTexts[name].name} ({parameterTexts[name].unit})
                        <input inputMode="decimal" value={fixed[name]} placeholder="to be found" autoComplete="off"
                            onChange={(event) => onFixed({ ...fixed, [name]: event.target.value })} />
                    </label>
                ))}
                <label>
                    Error of a mark (pixels)
                    <input inputMode="decimal" value={clickError} autoComplete="off"
                        onChange={(event) => onClickError(event.target.value)} />
                </label>
            </div>
        </details>
    );
}
